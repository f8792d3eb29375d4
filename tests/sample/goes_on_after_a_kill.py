#!/usr/bin/env python3
"""Kills loads of the sample data over and over again: goes_on_after_a_kill.py --tool ZTIMPORT --data-root DIR"""
import random
import signal
import subprocess
import sys
import time

import sample as sample_tracker

KILLS = 15


def load_with_kills(sample, longest):
    """Starts the same command until it comes to its end; returns how often it was killed, and its last output."""
    kills = 0
    while True:
        load = subprocess.Popen([sample.tool, *sample.command("load", sample.packets)], stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if kills < KILLS:
            time.sleep(random.uniform(0, longest))
            load.kill()
        output, _ = load.communicate()
        if load.returncode != -signal.SIGKILL:
            return kills, load.returncode, output
        kills += 1


def test(sample, expect):
    seed = random.randrange(2**32)
    random.seed(seed)
    print(f"seed {seed}")
    undisturbed = sample.folder / "undisturbed.db"
    sample.init(undisturbed)
    started = time.monotonic()
    sample.run("load", sample.packets, database=undisturbed)
    duration = time.monotonic() - started

    sample.init()
    kills, status, output = load_with_kills(sample, duration / 5)
    print(f"killed {kills} times in loads of up to {duration / 5:.1f} s; the last one:\n{output}")
    expect.equal("exit code of the last load", status, 0)
    expect.true("the load was killed", kills > 2)
    expect.true("the last load says what earlier ones did", "already loaded" in output or "goes on behind" in output)
    expect.true("the database is that of an undisturbed load", sample.dump() == sample.dump(undisturbed))


sys.exit(sample_tracker.main(test))
