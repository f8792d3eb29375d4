#!/usr/bin/env python3
"""Kills a load of the sample data over and over again, at points that are spread over it:
goes_on_after_a_kill.py --tool ZTIMPORT --faulty-tool ZTIMPORT_FAULTY --data-root DIR
"""
import os
import signal
import struct
import subprocess
import sys

import sample as sample_tracker

KILLS = 10
WRITES = 3  # the place of the writes among the counts, see tests/support/fault_points.h


def load(sample, database, **faults):
    """Runs the load of everything; returns its exit code and what it said."""
    done = subprocess.run([sample.faulty_tool, *sample.command("load", sample.packets, database=database)],
                          env=dict(os.environ, **faults), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    return done.returncode, done.stdout


def test(sample, expect):
    undisturbed = sample.folder / "undisturbed.db"
    counts = sample.folder / "counts"
    sample.init(undisturbed)
    status, output = load(sample, undisturbed, ZT_FAULT_COUNTS=str(counts))
    expect.equal("exit code of the undisturbed load", status, 0)
    writes = struct.unpack_from("=Q", counts.read_bytes(), 8 * WRITES)[0]
    expect.true("the load writes", writes > 100 * KILLS)

    # Each load is killed when it has done a part of the work, so that it takes all of them.
    sample.init()
    resumed = 0
    for _ in range(KILLS):
        status, output = load(sample, sample.database, ZT_FAULT=f"write:{writes // (2 * KILLS)}:KILL")
        expect.equal("exit code of a killed load", status, -signal.SIGKILL)
        resumed += "goes on behind record" in output
    expect.true("most loads begin amid a source", resumed > KILLS // 2)
    status, output = load(sample, sample.database)
    print(f"the last load, after one of {writes} writes was killed {KILLS} times:\n{output}")
    expect.equal("exit code of the last load", status, 0)
    expect.true("the last load says what earlier ones did", "already loaded" in output)
    expect.true("the database is that of an undisturbed load", sample.dump() == sample.dump(undisturbed))


sys.exit(sample_tracker.main(test))
