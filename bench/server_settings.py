#!/usr/bin/env python3
"""Prints what settings of a server do to the time of loads: server_settings.py LOAD_BENCH ZTIMPORT [RECORDS]

Each row of the table is measured on servers of their own (scripts/private-server), which are as a server comes but for
what the row says. The rounds alternate between the rows, and the medians of the seconds are shown, with the lowest and
the highest: so a table of an uneasy machine shows that it is one.
"""
import pathlib
import statistics
import subprocess
import sys

ROUNDS = 3
PRIVATE_SERVER = pathlib.Path(__file__).parent.parent / "scripts/private-server"
# What private-server sets for tests, as a server comes.
ORDINARY = {"fsync": "on", "full_page_writes": "on", "synchronous_commit": "on", "wal_level": "replica",
            "max_wal_senders": "10"}
ROWS = {
    "as the server comes": {},
    "with `synchronous_commit=off`": {"synchronous_commit": "off"},
    "with `max_wal_size=32MB`: checkpoints during the load": {"max_wal_size": "32MB"},
    "with `shared_buffers=1GB` instead of 128 MB": {"shared_buffers": "1GB"},
    "with `fsync=off` and `full_page_writes=off`": {"fsync": "off", "full_page_writes": "off"},
}


def seconds(settings, command):
    """Those of creating, updating and adding history."""
    options = [part for name, value in {**ORDINARY, **settings}.items() for part in ("--set", f"{name}={value}")]
    shown = subprocess.run([PRIVATE_SERVER, *options, *command], check=True, capture_output=True, text=True).stdout
    return [float(number) for number in shown.split()]


def cell(values):
    return f"{statistics.median(values):.2f} s ({min(values):.2f} to {max(values):.2f})"


def main(bench, tool, records="10000"):
    taken = {row: [] for row in ROWS}
    for _ in range(ROUNDS):
        for row, settings in ROWS.items():
            taken[row].append(seconds(settings, [bench, tool, "server", records]))
    print("| | create | update | history |\n|---|---|---|---|")
    for row, rounds in taken.items():
        print(f"| {row} |", " | ".join(cell(kind) for kind in zip(*rounds)), "|")


if __name__ == "__main__":
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    main(*sys.argv[1:])
