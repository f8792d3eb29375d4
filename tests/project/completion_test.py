#!/usr/bin/env python3
"""What the completion for bash offers. completion_test.py --tool-dir DIR --source DIR [unittest option...]"""
import argparse
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

arguments = None

# Calls the completion as bash does, for the words given; the last one is being typed.
SCRIPT = """
compopt() { :; }
source "$1"
shift
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_ztimport
printf '%s\\n' "${COMPREPLY[@]}"
"""


class Completion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="completion_test.")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        (cls.folder / "packets").mkdir()
        (cls.folder / "page.html").write_text("")
        schema = arguments.source / "examples/tracker/schema.yaml"
        subprocess.run([arguments.tool_dir / "ztimport", "init", cls.folder / "tracker.db", schema], check=True,
                       stdout=subprocess.DEVNULL)

    def offered(self, *words):
        path = f"{arguments.tool_dir}{os.pathsep}{os.environ['PATH']}"
        script = arguments.source / "completion/ztimport.bash"
        done = subprocess.run(["bash", "-c", SCRIPT, "bash", script, "ztimport", *words], cwd=self.folder, text=True,
                              env=dict(os.environ, PATH=path), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, check=False)
        return sorted(done.stdout.split())

    def test_commands(self):
        self.assertEqual(self.offered("ch"), ["check"])
        self.assertLessEqual({"init", "load", "check", "verify", "show", "survey"}, set(self.offered("")))

    def test_options_of_a_command(self):
        self.assertEqual(self.offered("load", "--max-re"), ["--max-record-size", "--max-reference-tries",
                                                            "--max-rejects"])
        self.assertEqual(self.offered("check", "tracker.db", "--rej"), [])
        self.assertEqual(self.offered("--v"), ["--version"])

    def test_files(self):
        self.assertEqual(self.offered("load", "tr"), ["tracker.db"])
        self.assertEqual(self.offered("load", "tracker.db", "pa"), ["packets", "page.html"])
        self.assertEqual(self.offered("load", "--html", "pa"), ["packets", "page.html"])

    def test_folders_where_an_option_takes_one(self):
        self.assertEqual(self.offered("load", "tracker.db", "--attachments", "pa"), ["packets"])

    def test_nothing_where_a_number_is_meant(self):
        self.assertEqual(self.offered("load", "--max-rejects", ""), [])
        self.assertEqual(self.offered("load", "--workers", ""), [])
        self.assertEqual(self.offered("load", "--retry-for", ""), [])

    def test_words_where_there_is_a_choice(self):
        self.assertEqual(self.offered("survey", "--format", ""), ["csv", "json", "jsonl"])
        self.assertEqual(self.offered("init", "tracker.db", "--layout", "s"), ["sharded"])

    def test_record_types_of_the_database(self):
        self.assertEqual(self.offered("show", "tracker.db", ""), ["bug", "component", "keyword", "user"])
        self.assertEqual(self.offered("show", "--immutable", "tracker.db", "k"), ["keyword"])
        self.assertEqual(self.offered("show", "packets", ""), [])

    def test_nothing_for_a_command_that_there_is_not(self):
        self.assertEqual(self.offered("eat", ""), [])


parser = argparse.ArgumentParser()
parser.add_argument("--tool-dir", type=pathlib.Path, required=True)
parser.add_argument("--source", type=pathlib.Path, required=True)
arguments, rest = parser.parse_known_args()
unittest.main(argv=[sys.argv[0], *rest])
