"""What the tests on the sample tracker share: finding the data, running the tool, comparing.

The data are a real tracker's bugs as packets. They do not belong to the project; they are looked for in ZT_SAMPLE_DIR or
in a folder below --data-root that has schema.yaml, expected.json, packets/, attachments.tsv and make_attachments.py.
A test ends with exit code 77 where they are not there.
"""
import argparse
import json
import os
import pathlib
import sqlite3
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
RECORD_TYPES = ["user", "product", "component", "keyword", "bug"]
COUNTS = {
    "bug_keywords": "SELECT count(*) FROM bug__keywords",
    "bug_cc": "SELECT count(*) FROM bug__cc",
    "history": "SELECT count(*) FROM zt_history",
    "duplicates": "SELECT count(*) FROM zt_duplicate",
    "attachments": "SELECT count(*) FROM zt_attachment",
    "attachment_bytes": "SELECT sum(filesize) FROM zt_attachment",
} | {record_type: f'SELECT count(*) FROM "{record_type}"' for record_type in RECORD_TYPES}


def find_data(data_root):
    named = os.environ.get("ZT_SAMPLE_DIR")
    folders = [pathlib.Path(named)] if named else sorted(pathlib.Path(data_root).glob("*"))
    return next((folder for folder in folders if (folder / "expected.json").is_file()), None)


class Sample:
    """The sample data, a folder to work in, the tool, and the tool that meets faults (tests/support/fault_points.h)."""

    def __init__(self, tool, faulty_tool, data, folder):
        self.tool = tool
        self.faulty_tool = faulty_tool
        self.data = data
        self.folder = folder
        self.packets = data / "packets"
        self.attachments = folder / "attachments"
        self.database = folder / "sample.db"
        subprocess.run([sys.executable, data / "make_attachments.py", data / "attachments.tsv", self.attachments],
                       check=True)

    def expected_counts(self):
        expected = json.loads((self.data / "expected.json").read_text())
        return {name: expected[name] for name in COUNTS}

    def ztimport(self, *arguments):
        started = time.monotonic()
        done = subprocess.run([self.tool, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False)
        print(f"$ ztimport {arguments[0]} ...: exit code {done.returncode}, {time.monotonic() - started:.1f} s\n"
              + done.stdout)
        return done

    def init(self, database=None):
        return self.ztimport("init", database or self.database, self.data / "schema.yaml").returncode

    def command(self, name, *sources, database=None):
        """A command that takes sources, with the attachments' folder."""
        return [name, database or self.database, "--attachments", self.attachments, *sources]

    def run(self, name, *sources, database=None):
        """Runs a command that writes a report; returns exit code, output and report."""
        report = self.folder / "report.json"
        report.unlink(missing_ok=True)
        done = self.ztimport(*self.command(name, "--report", report, *sources, database=database))
        return done.returncode, done.stdout, json.loads(report.read_text())

    def query(self, sql, database=None):
        with sqlite3.connect(database or self.database) as connection:
            return connection.execute(sql).fetchall()

    def change(self, sql):
        with sqlite3.connect(self.database) as connection:
            connection.execute(sql)

    def counts(self):
        return {name: self.query(query)[0][0] for name, query in COUNTS.items()}

    def dump(self, database=None):
        """All that a database holds but for the times at which duplicates were marked and the numbers of the runs."""
        with sqlite3.connect(database or self.database) as connection:
            connection.execute("UPDATE zt_duplicate SET action_time = ''")
            connection.execute("UPDATE zt_journal SET run = 1")
            lines = list(connection.iterdump())
            connection.rollback()
            return lines


class Expectations:
    def __init__(self):
        self.failed = 0

    def equal(self, what, actual, expected):
        if actual != expected:
            self.failed += 1
            print(f"FAILED {what}: {actual!r} instead of {expected!r}")

    def true(self, what, holds):
        self.equal(what, bool(holds), True)


def main(test):
    """Runs test(sample, expect) where the data are; the process's exit code."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool", required=True, type=pathlib.Path)
    parser.add_argument("--faulty-tool", type=pathlib.Path)
    parser.add_argument("--data-root", required=True)
    options = parser.parse_args()
    data = find_data(options.data_root)
    if data is None:
        print("skipped: the sample tracker data are not here")
        return SKIPPED
    expect = Expectations()
    with tempfile.TemporaryDirectory() as folder:
        test(Sample(options.tool, options.faulty_tool, data, pathlib.Path(folder)), expect)
    return 1 if expect.failed else 0
