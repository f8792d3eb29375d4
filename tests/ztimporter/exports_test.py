#!/usr/bin/env python3
"""Compares what a shared library exports with what callers of the importer may use.

Prints each signature that is missing or surplus and ends with 1 when there is one.
"""

import argparse
import collections
import re
import subprocess
import sys

# How often each demangled signature stands in the table of dynamic symbols. The C++ ABI makes two
# functions of a constructor (for a whole object, and for the base of a derived one), three of a
# virtual destructor (these two, and the one that also frees the object), and thunks of those two of
# them that are reached through a virtual base.
EXPECTED = collections.Counter({
    "AdImporter::AdImporter()": 2,
    "AdImporter::~AdImporter()": 3,
    "virtual thunk to AdImporter::~AdImporter()": 2,
    "AdImporter::SetSession(AdPtr<AdSession> const&)": 1,
    "AdImporter::Import(unsigned short const*)": 1,
    "vtable for AdImporter": 1,
    "VTT for AdImporter": 1,
    "typeinfo for AdImporter": 1,
    "typeinfo name for AdImporter": 1,
    "libztimporter_print_verid": 1,
    "libztimporter_sprintf_verid": 1,
})


def exported_signatures(nm, library):
    """The demangled signatures of the library's dynamic symbols, each with its number."""
    listing = subprocess.run(
        [nm, "--dynamic", "--defined-only", "--demangle", "--format=posix", library],
        check=True, capture_output=True, text=True).stdout
    # A line is "NAME TYPE VALUE [SIZE]"; names hold blanks, the rest does not.
    return collections.Counter(
        re.sub(r" [A-Za-z] [0-9a-f]+ ?[0-9a-f]*$", "", line) for line in listing.splitlines())


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--nm", required=True)
    parser.add_argument("shared_object")
    arguments = parser.parse_args()
    exported = exported_signatures(arguments.nm, arguments.shared_object)
    for signature in sorted((EXPECTED - exported).elements()):
        print(f"missing: {signature}")
    for signature in sorted((exported - EXPECTED).elements()):
        print(f"surplus: {signature}")
    return 0 if exported == EXPECTED else 1


if __name__ == "__main__":
    sys.exit(main())
