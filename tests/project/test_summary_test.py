#!/usr/bin/env python3
"""scripts/test-summary, on reports of its own."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

SUMMARY = pathlib.Path(__file__).parents[2] / "scripts" / "test-summary"
PROGRAM = """<testsuites tests="3"><testsuite name="A">
<testcase name="Works" status="run" result="completed" classname="A"/>
<testcase name="IsSkipped" status="run" result="skipped" classname="A"><skipped message="no"/></testcase>
{last}
</testsuite></testsuites>"""
WORKS = '<testcase name="WorksToo" status="run" result="completed" classname="A"/>'
FAILS = '<testcase name="Fails" status="run" result="completed" classname="A"><failure message="no"/></testcase>'


class TestSummary(unittest.TestCase):
    def summary(self, cases, program=None):
        with tempfile.TemporaryDirectory() as folder:
            report = pathlib.Path(folder) / "tests.xml"
            report.write_text(f"<testsuite>{cases}</testsuite>", encoding="utf-8")
            if program:
                (pathlib.Path(folder) / "a_test.xml").write_text(program, encoding="utf-8")
            done = subprocess.run([sys.executable, SUMMARY, report, folder], capture_output=True, text=True)
            return done.stdout.splitlines(), done.returncode

    def test_counts_the_tests_of_a_program_one_by_one(self):
        self.assertEqual(self.summary('<testcase name="a_test" status="run"/>', PROGRAM.format(last=WORKS)),
                         (["skipped: A.IsSkipped", "2 passed, 0 failed, 1 skipped"], 0))

    def test_names_what_failed_in_a_program(self):
        self.assertEqual(self.summary('<testcase name="a_test" status="fail"/>', PROGRAM.format(last=FAILS)),
                         (["skipped: A.IsSkipped", "failed: A.Fails", "1 passed, 1 failed, 1 skipped"], 1))

    def test_a_program_that_fails_without_a_failed_test_counts(self):
        lines, code = self.summary('<testcase name="a_test" status="fail"/>', PROGRAM.format(last=WORKS))
        self.assertEqual((lines[-2:], code),
                         (["failed: a_test (the program itself)", "2 passed, 1 failed, 1 skipped"], 1))

    def test_a_program_that_ended_before_it_could_tell_counts(self):
        self.assertEqual(self.summary('<testcase name="a_test" status="fail"/>'),
                         (["failed: a_test", "0 passed, 1 failed, 0 skipped"], 1))

    def test_counts_tests_that_are_no_programs_of_this_kind(self):
        cases = ('<testcase name="page" status="run"/>'
                 '<testcase name="sample" status="notrun"><skipped message="SKIP_RETURN_CODE=77"/></testcase>')
        self.assertEqual(self.summary(cases), (["skipped: sample", "1 passed, 0 failed, 1 skipped"], 0))

    def test_a_report_without_tests_fails(self):
        self.assertEqual(self.summary(""), (["0 passed, 0 failed, 0 skipped"], 1))


if __name__ == "__main__":
    unittest.main()
