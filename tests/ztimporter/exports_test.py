#!/usr/bin/env python3
"""Compares what a shared library exports with the names that callers of the importer may use.

Prints each name that is missing or surplus and ends with 1 when there is one.
"""

import argparse
import re
import subprocess
import sys

OPERATIONS = """
    AdImporter ~AdImporter SetSession Import
    SetupRecordMap CleanupRecordMap IsReferenceIDValid GetResultSetWhere SetupFieldValues
    ImportRecord UpdateRecord MarkDuplicates ImportHistory AddHistory ReallyImportHistory
    IsHistoryFieldEmpty ImportAttachment AddAttachment DiscardHistory
""".split()

EXPECTED = {f"AdImporter::{operation}" for operation in OPERATIONS} | {
    "virtual thunk to AdImporter::~AdImporter",
    "vtable for AdImporter",
    "VTT for AdImporter",
    "typeinfo for AdImporter",
    "typeinfo name for AdImporter",
    "libztimporter_print_verid",
    "libztimporter_sprintf_verid",
}


def exported_names(nm, library):
    """The demangled names of the library's dynamic symbols, without argument lists."""
    listing = subprocess.run(
        [nm, "--dynamic", "--defined-only", "--demangle", "--format=posix", library],
        check=True, capture_output=True, text=True).stdout
    # A line is "NAME TYPE VALUE [SIZE]"; names hold blanks, the rest does not.
    names = (re.sub(r" [A-Za-z] [0-9a-f]+ ?[0-9a-f]*$", "", line) for line in listing.splitlines())
    return {re.sub(r"\(.*", "", name) for name in names}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--nm", required=True)
    parser.add_argument("library")
    arguments = parser.parse_args()
    exported = exported_names(arguments.nm, arguments.library)
    for name in sorted(EXPECTED - exported):
        print(f"missing: {name}")
    for name in sorted(exported - EXPECTED):
        print(f"surplus: {name}")
    return 0 if exported == EXPECTED else 1


if __name__ == "__main__":
    sys.exit(main())
