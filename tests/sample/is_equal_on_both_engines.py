#!/usr/bin/env python3
"""Loads the same packets into a file and into a schema of a PostgreSQL server, and compares all tables row by row:
is_equal_on_both_engines.py --tool ZTIMPORT (--example DIR | --data-root DIR)

The packets are those of the example tracker in DIR, or those of the sample tracker (sample.py). The server is the one
that ZT_TEST_SERVER names. Ends with exit code 77 where it, its program psql or the packets are not there.
"""
import argparse
import glob
import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import sys
import tempfile

import sample as sample_tracker

# When a duplicate was marked, which the clock tells.
CLOCK = {("zt_duplicate", "action_time")}


def ztimport(tool, *arguments):
    subprocess.run([tool, *arguments], check=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)


def load(tool, database, schema, packets, attachments):
    ztimport(tool, "init", database, schema)
    ztimport(tool, "load", database, packets, "--attachments", attachments, "--quiet")
    ztimport(tool, "verify", database, packets, "--attachments", attachments, "--exact", "--quiet")


def plain(value):
    """A value as a server tells it in JSON."""
    return "\\x" + value.hex() if isinstance(value, bytes) else value


def rows_in_file(database):
    """The rows of every table, by its name; each as a value by column."""
    tables = {}
    with sqlite3.connect(database) as connection:
        names = connection.execute("SELECT name FROM sqlite_master WHERE type = 'table'").fetchall()
        for (name,) in names:
            cursor = connection.execute(f'SELECT * FROM "{name}"')
            columns = [column[0] for column in cursor.description]
            tables[name] = [dict(zip(columns, map(plain, row))) for row in cursor]
    return tables


def lines_of(psql, server, query):
    command = [psql, "--no-psqlrc", "--tuples-only", "--no-align", "--dbname", server, "--command", query]
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, encoding="utf-8").stdout.splitlines()


def rows_on_server(psql, server, schema):
    tables = {}
    for name in lines_of(psql, server, f"SELECT tablename FROM pg_tables WHERE schemaname = '{schema}'"):
        query = f'SELECT row_to_json(t) FROM "{schema}"."{name}" AS t'
        tables[name] = [json.loads(line) for line in lines_of(psql, server, query)]
    return tables


def texts_of(table, rows):
    """The rows as texts, in an order that depends on nothing but them."""
    return sorted(json.dumps([value for column, value in row.items() if (table, column) not in CLOCK]) for row in rows)


def compare(in_file, on_server):
    """The number of rows that are equal. Raises for the first difference."""
    if sorted(in_file) != sorted(on_server):
        raise AssertionError(f"the tables differ: {sorted(in_file)}, {sorted(on_server)}")
    count = 0
    for table, rows in in_file.items():
        for left, right in zip(texts_of(table, rows), texts_of(table, on_server[table]), strict=True):
            if left != right:
                raise AssertionError(f"{table} differs:\nin the file:   {left}\non the server: {right}")
            count += 1
    return count


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool", required=True)
    parser.add_argument("--example", type=pathlib.Path)
    parser.add_argument("--data-root")
    arguments = parser.parse_args()
    server = os.environ.get("ZT_TEST_SERVER")
    psql = shutil.which("psql") or next(iter(glob.glob("/usr/lib/postgresql/*/bin/psql")), None)
    data = arguments.example or sample_tracker.find_data(arguments.data_root)
    if not server or not psql or not data:
        print("skipped: there is no server, no psql or no data")
        return sample_tracker.SKIPPED
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        attachments = data / "attachments"
        if not arguments.example:
            attachments = folder / "attachments"
            subprocess.run([sys.executable, data / "make_attachments.py", data / "attachments.tsv", attachments],
                           check=True)
        schema = f"equal_{os.getpid()}"
        try:
            for database in (folder / "file.db", f"{server}&schema={schema}"):
                load(arguments.tool, database, data / "schema.yaml", data / "packets", attachments)
            count = compare(rows_in_file(folder / "file.db"), rows_on_server(psql, server, schema))
        finally:
            lines_of(psql, server, f"SET client_min_messages = warning; DROP SCHEMA IF EXISTS {schema} CASCADE")
    print(f"{count} rows are equal")
    return 0 if count else 1


if __name__ == "__main__":
    sys.exit(main())
