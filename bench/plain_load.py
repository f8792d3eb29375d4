"""Loads records as a short script would, with nothing but the standard library.

plain_load.py create|update DATABASE PACKETS

One transaction; nothing is checked or looked up, a record cannot be rejected, and nothing is known
of the load afterwards. load_bench compares the tool with this.
"""

import sqlite3
import sys
import xml.etree.ElementTree

BUG_TYPE = 2  # type ids follow the order of the schema file: keyword, bug
PLAIN = ["source_id", "title", "milestone", "version", "priority", "kind", "component", "reporter",
         "platform", "language", "opened", "votes", "description"]


def records(path):
    for _, element in xml.etree.ElementTree.iterparse(path):
        if element.tag == "record":
            yield {field.get("name"): field.text for field in element}
            element.clear()


def keywords_of(fields, numbers):
    return [numbers[name] for name in fields["keywords"].split(",")]


def history_rows(record, fields):
    lines = [line.split("\t") for line in fields["log"].split("\n")]
    ends = [line[1] for line in lines[1:]] + [None]
    for number, (line, end) in enumerate(zip(lines, ends), 1):
        yield BUG_TYPE, record, number, "log", line[1], end, *line[2:6], ""


def create(connection, path, numbers):
    columns = ", ".join(f'"{name}"' for name in PLAIN)
    marks = ", ".join("?" * len(PLAIN))
    insert = (f"INSERT INTO bug (dbid, zt_version, id, state, {columns}) "
              f"VALUES (?, 1, ?, 'NEW', {marks})")
    for record, fields in enumerate(records(path), 1):
        connection.execute(insert, [record, f"BUG{record:08}"] + [fields[name] for name in PLAIN])
        connection.executemany(
            "INSERT INTO bug__keywords (record, position, target) VALUES (?, ?, ?)",
            [(record, place, target) for place, target in enumerate(keywords_of(fields, numbers))])
        connection.executemany("INSERT INTO zt_history VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                               history_rows(record, fields))


def update(connection, path, _):
    assignments = ", ".join(f'"{name}" = ?' for name in PLAIN[1:])
    change = (f"UPDATE bug SET zt_version = zt_version + 1, {assignments} WHERE source_id = ?")
    for fields in records(path):
        connection.execute(change, [fields[name] for name in PLAIN[1:] + PLAIN[:1]])


def main(what, database, path):
    connection = sqlite3.connect(database, isolation_level=None)
    connection.executescript("PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON;"
                             "PRAGMA cache_size = -32768; PRAGMA temp_store = MEMORY;")
    numbers = dict(connection.execute("SELECT name, dbid FROM keyword"))
    connection.execute("BEGIN IMMEDIATE")
    {"create": create, "update": update}[what](connection, path, numbers)
    connection.execute("COMMIT")
    connection.close()


if __name__ == "__main__":
    main(*sys.argv[1:])
