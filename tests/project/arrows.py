#!/usr/bin/env python3
"""Compares the includes of all sources with the table of rooms and arrows: arrows.py SOURCE_DIR

The table stands in ARCHITECTURE.md under "The arrows": a row for each folder with sources, and the folders that it may
include besides itself, which stand further down ("everything below": all of those). A room that ends in "..." is a folder
with all below it. Told are rooms that the table does not name, or that are not there, includes that it does not allow, and
arrows that nothing uses; folders that hold so much that it must be more than one thing; and files of one name.
"""
import collections
import pathlib
import re
import sys

HEADING = "## The arrows"
FOLDERS = ["platform", "ztimporter", "recorddb", "tool", "tests", "bench", "fuzz", "examples"]
MOST_PAIRS = 30  # of a header and a source of one name; either may be missing
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)


def read_table(text):
    """The rows under the heading, in their order: {room: rooms that it may include, or None for everything below}."""
    section = text.split(f"{HEADING}\n", 1)[1].split("\n## ", 1)[0]
    rows = [line.strip().strip("|").split("|") for line in section.splitlines() if line.startswith("|")]
    table = {}
    for cells in rows[2:]:
        targets = None if cells[1].strip() == "everything below" else re.findall(r"`([^`]+)`", cells[1])
        table[re.findall(r"`([^`]+)`", cells[0])[0]] = targets
    return table


class Rooms:
    def __init__(self, names):
        self.exact = {name.rstrip("/") for name in names if not name.endswith("...")}
        self.whole = {name[:-len("/...")] for name in names if name.endswith("...")}

    def room_of(self, folder):
        """The room as the table names it; nothing for a folder that it does not name."""
        if folder in self.exact:
            return f"{folder}/"
        parts = folder.split("/")
        for length in range(len(parts), 0, -1):
            if "/".join(parts[:length]) in self.whole:
                return "/".join(parts[:length]) + "/..."
        return None


def sources_of(root):
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp") and path.is_file():
                yield path.relative_to(root)


def upward_arrows(table):
    order = list(table)
    for room, targets in table.items():
        for target in targets or []:
            if target not in table:
                yield f"{room} may include {target}, which has no row of its own"
            elif order.index(target) <= order.index(room):
                yield f"{room} may include {target}, which stands above it"


def allowed_targets(table):
    order = list(table)
    return {room: order[order.index(room) + 1:] if targets is None else targets for room, targets in table.items()}


def includes_of(root, path):
    """The folders of the project that a source includes something from."""
    for name in INCLUDE.findall((root / path).read_text(encoding="utf-8")):
        if "/" in name and (root / name).is_file():
            yield name, str(pathlib.PurePath(name).parent)


def overfull_folders(paths):
    names = collections.defaultdict(set)
    for path in paths:
        names[path.parent].add(path.stem)
    for folder, stems in names.items():
        if len(stems) > MOST_PAIRS:
            yield f"{folder}/ holds {len(stems)} headers with their sources: more than {MOST_PAIRS} are several rooms"


def shared_names(paths):
    places = collections.defaultdict(list)
    for path in paths:
        places[path.name].append(str(path))
    for found in places.values():
        if len(found) > 1:
            yield f"{' and '.join(found)} have one name"


def faults_of(root):
    table = read_table((root / "ARCHITECTURE.md").read_text(encoding="utf-8"))
    rooms = Rooms(table)
    faults = list(upward_arrows(table))
    allowed = allowed_targets(table)
    seen, used = set(), set()
    paths = list(sources_of(root))
    for path in paths:
        room = rooms.room_of(str(path.parent))
        if room is None:
            faults.append(f"{path} stands in a room that the table does not name")
            continue
        seen.add(room)
        faults += [f"{path} includes {name}: an include names its room, not the way there"
                   for name in INCLUDE.findall((root / path).read_text(encoding="utf-8")) if ".." in name.split("/")]
        for name, folder in includes_of(root, path):
            target = rooms.room_of(folder)
            used.add((room, target))
            if target not in (room, None) and target not in allowed[room]:
                faults.append(f"{path} includes {name}: no arrow leads from {room} to {target}")
    faults += [*overfull_folders(paths), *shared_names(paths)]
    faults += [f"{room} has a row and no sources" for room in table if room not in seen]
    faults += [f"nothing in {room} includes anything of {target}"
               for room, targets in table.items() for target in targets or [] if (room, target) not in used]
    return faults


def main(root):
    faults = faults_of(pathlib.Path(root))
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1]))
