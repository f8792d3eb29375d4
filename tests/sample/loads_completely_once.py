#!/usr/bin/env python3
"""Rehearses, loads and verifies the sample data, loads them once more, and updates the bugs:
loads_completely_once.py --tool ZTIMPORT --data-root DIR
"""
import json
import sys

import sample as sample_tracker
from sample import RECORD_TYPES


def check_first_load(sample, expected, expect):
    status, _, report = sample.run("load", sample.packets)
    expect.equal("exit code of the load", status, 0)
    expect.equal("counts in the database", sample.counts(), expected)
    expect.equal("created records in the report", report["created"], sum(expected[name] for name in RECORD_TYPES))
    expect.equal("updated records in the report", report["updated"], expected["duplicates"])
    expect.equal("history entries in the report", report["history"], expected["history"])
    expect.equal("attachments in the report", report["attachments"], expected["attachments"])
    expect.equal("duplicates in the report", report["duplicates"], expected["duplicates"])
    expect.equal("rejects in the report", (report["rejected"], report["rejects"]), (0, []))


def check_rehearsal(sample, expected, expect):
    before = sample.dump()
    status, output, report = sample.run("check", sample.packets)
    expect.equal("exit code of the rehearsal", status, 0)
    expect.true("its verdict", "Nothing would be lost or rejected." in output)
    expect.equal("created records in its report", report["created"], sum(expected[name] for name in RECORD_TYPES))
    expect.true("the rehearsal leaves the database as it was", sample.dump() == before)


def check_verified(sample, sources, expect):
    before = sample.database.read_bytes()
    for options, verdict in (([], "Verified: everything in the sources is in the database."),
                             (["--exact"], "Verified: everything in the sources is in the database, and nothing else.")):
        status, output, report = sample.run("verify", *options, *sources)
        expect.equal("exit code of the comparison", status, 0)
        expect.true("its verdict", verdict in output)
        expect.equal("differences", report["differences"], [])
        expect.equal("faults of the database", report["faults"], [])
    expect.true("the comparison writes nothing", sample.database.read_bytes() == before)


def check_second_load(sample, expect):
    before = sample.dump()
    status, output, report = sample.run("load", sample.packets)
    expect.equal("exit code of the second load", status, 0)
    expect.true("the second load says that everything is loaded", "already" in output)
    expect.equal("what the second load did", [report[name] for name in ("created", "updated", "rejected", "history")],
                 [0, 0, 0, 0])
    expect.true("the second load leaves the database as it was", sample.dump() == before)


def check_update(sample, expected, expect):
    """The same bugs under a configuration that updates: other work to the journal, and nothing new in the database."""
    configuration = (sample.packets / "008-config-bugs.xml").read_text(encoding="utf-8")
    updating = sample.folder / "update-bugs.xml"
    updating.write_text(configuration.replace("</configuration>", '<updaterecord name="TRUE"/></configuration>'),
                        encoding="utf-8")
    status, _, report = sample.run("load", updating, sample.packets / "009-bugs.xml")
    expect.equal("exit code of the update", status, 0)
    expect.equal("records that the update created, updated, rejected",
                 (report["created"], report["updated"], report["rejected"]), (0, expected["bug"], 0))
    expect.equal("counts after the update", sample.counts(), expected)


def test(sample, expect):
    expected = sample.expected_counts()
    expect.equal("exit code of init", sample.init(), 0)
    check_rehearsal(sample, expected, expect)
    check_first_load(sample, expected, expect)
    check_verified(sample, [sample.packets], expect)
    check_second_load(sample, expect)
    check_update(sample, expected, expect)
    check_verified(sample, [sample.packets, sample.folder / "update-bugs.xml", sample.packets / "009-bugs.xml"], expect)
    print("counts: " + json.dumps(sample.counts()))


sys.exit(sample_tracker.main(test))
