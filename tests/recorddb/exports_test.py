#!/usr/bin/env python3
"""Compares what the record database's library exports with what its headers mark for export.

Prints each marked class or function that is missing and each symbol that is surplus, and ends with
1 when there is one.
"""

import argparse
import pathlib
import re
import subprocess
import sys

# Callers catch these, which takes their types.
EXCEPTIONS = ["recorddb::DatabaseError", "recorddb::schema::SchemaError", "recorddb::sql::Error"]


def marked_names(headers):
    """The full names of the classes and of the functions that headers mark."""
    classes, functions = set(), set()
    for header in headers:
        namespace = ""
        # A declaration may go on in the next line.
        text = re.sub(r"RECORDDB_API\s*\n\s*", "RECORDDB_API ", header.read_text())
        for line in text.splitlines():
            if opened := re.match(r"namespace (recorddb[\w:]*) \{", line):
                namespace = opened[1]
            elif marked := re.match(r"(?:class|struct) RECORDDB_API (\w+)", line):
                classes.add(f"{namespace}::{marked[1]}")
            elif marked := re.match(r"RECORDDB_API .*?(\w+)\(", line):
                functions.add(f"{namespace}::{marked[1]}")
    return classes, functions


def exported_symbols(nm, library):
    """The demangled names of the library's dynamic symbols."""
    listing = subprocess.run(
        [nm, "--dynamic", "--defined-only", "--demangle", "--format=posix", library],
        check=True, capture_output=True, text=True).stdout
    # A line is "NAME TYPE VALUE [SIZE]"; names hold blanks, the rest does not.
    return {re.sub(r" [A-Za-z] [0-9a-f]+ ?[0-9a-f]*$", "", line) for line in listing.splitlines()}


def name_of(symbol):
    """The full name of a symbol's function, or of the class that it belongs to as a whole."""
    plain = re.sub(r"^(vtable|typeinfo|typeinfo name) for ", "", symbol)
    return re.sub(r"(\[abi:\w+\])?\(.*", "", plain)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--nm", required=True)
    parser.add_argument("shared_object")
    parser.add_argument("headers", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()
    classes, functions = marked_names(arguments.headers)
    symbols = exported_symbols(arguments.nm, arguments.shared_object)

    used, surplus = set(), []
    for symbol in symbols:
        name = name_of(symbol)
        owner = name.rpartition("::")[0]
        if name in classes | functions:
            used.add(name)
        elif owner in classes:
            used.add(owner)
        else:
            surplus.append(symbol)
    missing = [name for name in classes | functions if name not in used]
    missing += [f"typeinfo for {name}" for name in EXCEPTIONS if f"typeinfo for {name}" not in symbols]
    for name in sorted(missing):
        print(f"missing: {name}")
    for symbol in sorted(surplus):
        print(f"surplus: {symbol}")
    print(f"{len(symbols)} symbols of {len(classes)} classes and {len(functions)} functions")
    return 1 if missing or surplus else 0


if __name__ == "__main__":
    sys.exit(main())
