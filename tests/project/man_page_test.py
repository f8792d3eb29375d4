#!/usr/bin/env python3
"""The man page and the page of the documentation that it is made from against the tool itself.

man_page_test.py --tool-dir DIR --source DIR [unittest option...]
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

arguments = None
OPTION = re.compile(r"--[a-z][a-z-]*")


def tool(*words):
    return subprocess.run([arguments.tool_dir / "ztimport", *words], check=True, stdout=subprocess.PIPE,
                          text=True).stdout


def commands():
    listed = tool("--help").split("Subcommands:")[1]
    return re.findall(r"^  ([a-z]+) ", listed, re.MULTILINE)


def options_of(command):
    return set(re.findall(r"^  (?:-\w,)?(--[a-z-]+)", tool(command, "--help"), re.MULTILINE))


def make(source):
    with tempfile.TemporaryDirectory() as folder:
        page = pathlib.Path(folder) / "page.md"
        page.write_text(source, encoding="utf-8")
        target = pathlib.Path(folder) / "page.1"
        subprocess.run([sys.executable, arguments.source / "man/man_page.py", page, "1.2.3", target], check=True,
                       stderr=subprocess.PIPE)
        return target.read_text(encoding="utf-8")


SYNOPSIS = "# The command line\n\n```\nztimport load DB SOURCE...    import packets\n```\n\n"


class ManPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.documentation = (arguments.source / "docs/command-line.md").read_text(encoding="utf-8")
        cls.page = make(cls.documentation).replace("\\-", "-").replace("\\fB", "").replace("\\fI", "").replace("\\fR", "")

    def section(self, command):
        found = re.search(rf'^\.SH "{command.upper()}"\n(.*?)(?=^\.SH)', self.page, re.MULTILINE | re.DOTALL)
        self.assertIsNotNone(found, f"the page has no section about {command}")
        return found[1]

    def test_tells_of_every_command_and_option(self):
        # These are told of once, for all commands; a rehearsal takes the options of a load.
        common = {"--help", "--schema"}
        for command in commands():
            told = set(OPTION.findall(self.section(command) + (self.section("load") if command == "check" else "")))
            self.assertEqual(options_of(command) - common - told, set(), f"untold options of {command}")
        for option in [*common, "--version"]:
            self.assertIn(option, self.page)

    def test_tells_of_no_option_that_there_is_not(self):
        there = {"--help", "--version"}.union(*(options_of(command) for command in commands()))
        for table in re.findall(r"^\| `--.*$", self.documentation, re.MULTILINE):
            self.assertLessEqual(set(OPTION.findall(table.split(" | ")[0])), there)

    def test_has_the_sections_of_a_man_page(self):
        self.assertRegex(self.page, r'^\.\\" .*\n\.TH ZTIMPORT 1 ')
        for name in ["NAME", "SYNOPSIS", "DESCRIPTION", '"EXIT CODES"', '"SEE ALSO"']:
            self.assertIn(f"\n.SH {name}\n", self.page)

    def test_keeps_what_troff_would_read_as_its_own(self):
        page = make(SYNOPSIS + ".dot and \\back `-x` *it's*\n\n| option | effect |\n|---|---|\n| `--a N` | b \\| “c” |\n")
        self.assertIn("\n\\&.dot and \\eback \\fB\\-x\\fR \\fIit\\(aqs\\fR\n", page)
        self.assertIn("\n.TP\n\\fB\\-\\-a\\fR \\fIN\\fR\nb | \\[u201C]c\\[u201D]\n", page)

    def test_keeps_lists_and_blocks(self):
        page = make(SYNOPSIS + "- one\n  more\n- two\n\n```console\n$ a -b\n.c\n```\n")
        self.assertIn(".IP \\(bu 2\none more\n.IP \\(bu 2\ntwo\n.RS 4\n.nf\n$ a \\-b\n\\&.c\n.fi\n.RE\n", page)

    def test_refuses_what_it_would_not_show(self):
        with self.assertRaises(subprocess.CalledProcessError):
            make(SYNOPSIS + "> a quotation\n")


parser = argparse.ArgumentParser()
parser.add_argument("--tool-dir", type=pathlib.Path, required=True)
parser.add_argument("--source", type=pathlib.Path, required=True)
arguments, rest = parser.parse_known_args()
unittest.main(argv=[sys.argv[0], *rest])
