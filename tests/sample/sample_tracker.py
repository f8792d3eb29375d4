#!/usr/bin/env python3
"""Loads the sample tracker data, if it is there: sample_tracker.py --tool ZTIMPORT --data-root DIR

The data are a real tracker's bugs as packets. They do not belong to the project; they are looked for in ZT_SAMPLE_DIR or
in a folder below --data-root that has schema.yaml, expected.json, packets/, attachments.tsv and make_attachments.py.
Exit code 77 says that they are not there.
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
    def __init__(self, tool, data, folder):
        self.tool = tool
        self.data = data
        self.folder = folder
        self.attachments = folder / "attachments"
        self.database = folder / "sample.db"
        subprocess.run([sys.executable, data / "make_attachments.py", data / "attachments.tsv", self.attachments],
                       check=True)

    def ztimport(self, *arguments):
        started = time.monotonic()
        done = subprocess.run([self.tool, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False)
        print(f"$ ztimport {arguments[0]} ...: exit code {done.returncode}, {time.monotonic() - started:.1f} s\n"
              + done.stdout)
        return done

    def load(self, *sources):
        """Loads the sources; returns exit code, output and report."""
        report = self.folder / "report.json"
        done = self.ztimport("load", self.database, "--attachments", self.attachments, "--report", report, *sources)
        return done.returncode, done.stdout, json.loads(report.read_text())

    def counts(self):
        with sqlite3.connect(self.database) as connection:
            return {name: connection.execute(query).fetchone()[0] for name, query in COUNTS.items()}

    def dump(self):
        with sqlite3.connect(self.database) as connection:
            return list(connection.iterdump())


class Expectations:
    def __init__(self):
        self.failed = 0

    def equal(self, what, actual, expected):
        if actual != expected:
            self.failed += 1
            print(f"FAILED {what}: {actual!r} instead of {expected!r}")


def check_first_load(sample, expected, expect):
    status, _, report = sample.load(sample.data / "packets")
    expect.equal("exit code of the load", status, 0)
    expect.equal("counts in the database", sample.counts(), expected)
    expect.equal("created records in the report", report["created"], sum(expected[name] for name in RECORD_TYPES))
    expect.equal("updated records in the report", report["updated"], expected["duplicates"])
    expect.equal("history entries in the report", report["history"], expected["history"])
    expect.equal("attachments in the report", report["attachments"], expected["attachments"])
    expect.equal("duplicates in the report", report["duplicates"], expected["duplicates"])
    expect.equal("rejects in the report", (report["rejected"], report["rejects"]), (0, []))


def check_second_load(sample, expect):
    before = sample.dump()
    status, output, report = sample.load(sample.data / "packets")
    expect.equal("exit code of the second load", status, 0)
    expect.equal("the second load says that everything is loaded", "already" in output, True)
    expect.equal("what the second load did", [report[name] for name in ("created", "updated", "rejected", "history")],
                 [0, 0, 0, 0])
    expect.equal("the second load leaves the database as it was", sample.dump() == before, True)


def check_update(sample, expected, expect):
    """The same bugs under a configuration that updates: other work to the journal, and nothing new in the database."""
    packets = sample.data / "packets"
    configuration = (packets / "008-config-bugs.xml").read_text(encoding="utf-8")
    updating = sample.folder / "update-bugs.xml"
    updating.write_text(configuration.replace("</configuration>", '<updaterecord name="TRUE"/></configuration>'),
                        encoding="utf-8")
    status, _, report = sample.load(updating, packets / "009-bugs.xml")
    expect.equal("exit code of the update", status, 0)
    expect.equal("records that the update created, updated, rejected",
                 (report["created"], report["updated"], report["rejected"]), (0, expected["bug"], 0))
    expect.equal("counts after the update", sample.counts(), expected)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool", required=True, type=pathlib.Path)
    parser.add_argument("--data-root", required=True)
    options = parser.parse_args()
    data = find_data(options.data_root)
    if data is None:
        print("skipped: the sample tracker data are not here")
        return SKIPPED
    expected = json.loads((data / "expected.json").read_text())
    expected = {name: expected[name] for name in COUNTS}
    expect = Expectations()
    with tempfile.TemporaryDirectory() as folder:
        sample = Sample(options.tool, data, pathlib.Path(folder))
        expect.equal("exit code of init", sample.ztimport("init", sample.database, data / "schema.yaml").returncode, 0)
        check_first_load(sample, expected, expect)
        check_second_load(sample, expect)
        check_update(sample, expected, expect)
        print("counts: " + json.dumps(sample.counts()))
    return 1 if expect.failed else 0


sys.exit(main())
