#!/usr/bin/env python3
"""The comparison of includes with the table of arrows, on small trees of its own."""
import pathlib
import tempfile
import unittest

import arrows

TABLE = """# House

## The arrows

| room | may include |
|---|---|
| `tests/...` | everything below |
| `tool/` | `tool/io/`, `platform/core/` |
| `tool/io/` | `platform/core/` |
| `platform/core/` | |

## What follows

| another | table |
|---|---|
| `nowhere/` | |
"""
SOURCES = {
    "tool/main.cpp": '#include <string>\n#include "tool/io/file.h"\n#include "platform/core/text.h"\n',
    "tool/io/file.h": '#include "platform/core/text.h"\n',
    "platform/core/text.h": "",
    "tests/core/deep/text_test.cpp": '#include "fixture.h"\n',
}


class Arrows(unittest.TestCase):
    def faults(self, sources=None, table=TABLE):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, text in {**SOURCES, **(sources or {}), "ARCHITECTURE.md": table}.items():
                if text is not None:
                    (root / name).parent.mkdir(parents=True, exist_ok=True)
                    (root / name).write_text(text, encoding="utf-8")
            return arrows.faults_of(root)

    def test_what_the_table_allows_passes(self):
        self.assertEqual(self.faults(), [])

    def test_an_include_without_an_arrow_is_told(self):
        self.assertEqual(self.faults({"platform/core/bad.cpp": '#include "tool/io/file.h"\n'}),
                         ["platform/core/bad.cpp includes tool/io/file.h: "
                          "no arrow leads from platform/core/ to tool/io/"])

    def test_an_include_in_angle_brackets_counts_as_well(self):
        self.assertEqual(len(self.faults({"platform/core/bad.cpp": "#include <tool/io/file.h>\n"})), 1)

    def test_an_include_by_a_relative_path_is_told(self):
        self.assertEqual(self.faults({"tool/io/bad.cpp": '#include "../main.h"\n'}),
                         ["tool/io/bad.cpp includes ../main.h: an include names its room, not the way there"])

    def test_everything_below_is_what_stands_further_down(self):
        self.assertEqual(self.faults({"tests/tool/file_test.cpp": '#include "tool/io/file.h"\n'}), [])
        table = TABLE.replace("| `tests/...` | everything below |", "").replace(
            "\n## What", "| `tests/...` | everything below |\n\n## What")
        self.assertEqual(len(self.faults({"tests/tool/file_test.cpp": '#include "tool/io/file.h"\n'}, table)), 1)

    def test_a_room_without_a_row_is_told(self):
        self.assertEqual(self.faults({"tool/new/thing.cpp": ""}),
                         ["tool/new/thing.cpp stands in a room that the table does not name"])

    def test_a_row_without_a_room_is_told(self):
        self.assertEqual(self.faults(table=TABLE.replace("| `tests/...`", "| `bench/` | |\n| `tests/...`", 1)),
                         ["bench/ has a row and no sources"])

    def test_an_arrow_that_nothing_uses_is_told(self):
        self.assertEqual(self.faults({"tool/io/file.h": ""}),
                         ["nothing in tool/io/ includes anything of platform/core/"])

    def test_an_arrow_upward_is_told_even_where_nothing_uses_it(self):
        faults = self.faults(table=TABLE.replace("| `platform/core/` | |", "| `platform/core/` | `tool/` |"))
        self.assertIn("platform/core/ may include tool/, which stands above it", faults)

    def test_an_arrow_to_a_room_without_a_row_is_told(self):
        faults = self.faults(table=TABLE.replace("| `platform/core/` | |", "| `platform/core/` | `recorddb/` |"))
        self.assertIn("platform/core/ may include recorddb/, which has no row of its own", faults)

    def test_a_folder_may_hold_thirty_headers_with_their_sources(self):
        sources = {f"tool/io/part{number}.{ending}": "" for number in range(29) for ending in ("h", "cpp")}
        self.assertEqual(self.faults(sources), [])  # and file.h
        self.assertEqual(self.faults({**sources, "tool/io/more.cpp": ""}),
                         ["tool/io/ holds 31 headers with their sources: more than 30 are several rooms"])

    def test_two_files_of_one_name_are_told(self):
        self.assertEqual(self.faults({"platform/core/file.h": ""}),
                         ["platform/core/file.h and tool/io/file.h have one name"])


if __name__ == "__main__":
    unittest.main()
