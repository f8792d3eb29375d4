#!/usr/bin/env python3
"""Loads the sample data from its JSON Lines by a map, and compares the database with the packets of the same data:
loads_by_a_map.py --tool ZTIMPORT --data-root DIR; the maps are looked for in the folder maps beside DIR.
"""
import pathlib
import sys

import sample as sample_tracker


def check(sample, expect):
    map_file = sample.data.parent.parent / "maps" / sample.data.name / "map.yaml"
    if not map_file.is_file():
        print(f"there is no {map_file}")
        sys.exit(sample_tracker.SKIPPED)
    sample.init()
    status, output, report = sample.run("load", "--map", map_file, sample.data)
    expect.equal("exit code of the load", status, 0)
    expect.equal("rejects in the report", (report["rejected"], report["rejects"]), (0, []))
    expect.equal("counts in the database", sample.counts(), sample.expected_counts())
    status, output, _ = sample.run("verify", "--exact", sample.packets)
    expect.equal("exit code of the comparison with the packets", status, 0)
    expect.true("its verdict", "Verified: everything in the sources is in the database, and nothing else." in output)
    status, output, report = sample.run("verify", "--map", map_file, sample.data)
    expect.equal("what the map itself changes", [difference["problem"][:60] for difference in report["differences"]],
                 ["records: bug, field description: 1 control character replace"])
    status, output, report = sample.run("load", "--map", map_file, sample.data)
    expect.equal("what the second load did", [report[name] for name in ("created", "updated", "rejected", "history")],
                 [0, 0, 0, 0])


sys.exit(sample_tracker.main(check))
