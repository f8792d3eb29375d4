#!/usr/bin/env python3
"""Runs a page of the documentation: documentation.py --tool-dir DIR --source-dir DIR PAGE.md

The page's blocks are taken in order, in one temporary folder that sees the project's examples/:
  ```console            each line after "$ " is run by bash and must end with exit code 0; the lines below it are what
                        it must print (standard error included, the progress of loads left out). "..." stands for any
                        text within a line, and alone on a line for any number of lines. A line that ends with a
                        backslash goes on in the next.
  ```LANGUAGE file=NAME  is written to NAME.
Other blocks are for readers only.
"""
import argparse
import difflib
import os
import re
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```(\S*)\s*(.*)$")
# What a load says of its progress, if the machine is slow enough for it.
PROGRESS = re.compile(r"[\d,]+ records?, \d+ records/s\b.*")


def blocks(page):
    """Yields (line number, language, file name or None, lines) of each fenced block."""
    opened = None
    with open(page, encoding="utf-8") as text:
        for number, line in enumerate(text, 1):
            line = line.rstrip("\n")
            fence = FENCE.match(line)
            if opened is None and fence:
                name = re.fullmatch(r"file=(\S+)", fence[2])
                opened = (number, fence[1], name and name[1], [])
            elif opened is not None and line == "```":
                yield opened
                opened = None
            elif opened is not None:
                opened[3].append(line)
    if opened is not None:
        sys.exit(f"{page}:{opened[0]}: this block is never closed")


def commands(first_line, lines):
    """Yields (line number, command, expected output lines) of a console block."""
    current = None
    continued = False
    for number, line in enumerate(lines, first_line + 1):
        if continued:
            current[1] += "\n" + line
        elif line.startswith("$ "):
            if current:
                yield current
            current = [number, line[2:], []]
        elif current is None:
            sys.exit(f"line {number}: output before the first command")
        else:
            current[2].append(line)
        continued = current is not None and not current[2] and line.endswith("\\")
    if current:
        yield current


def line_pattern(line):
    return ".*".join(re.escape(part) for part in line.rstrip().split("..."))


def matches(expected, printed):
    """Whether the printed lines are the expected ones, with "..." standing for anything."""
    pattern = "".join(r"(?:.*\n)*" if line.strip() == "..." else line_pattern(line) + r"[ \t]*\n" for line in expected)
    return re.fullmatch(pattern, "".join(line + "\n" for line in printed)) is not None


def run(command, folder, tool_dir):
    environment = dict(os.environ, PATH=tool_dir + os.pathsep + os.environ["PATH"], LC_ALL="C.UTF-8", TZ="UTC")
    done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=1500, check=False)
    printed = done.stdout.decode("utf-8", "replace").splitlines()
    return done.returncode, [line for line in printed if not PROGRESS.fullmatch(line)]


def check_command(page, number, command, expected, folder, tool_dir):
    status, printed = run(command, folder, tool_dir)
    if status == 0 and matches(expected, printed):
        return True
    print(f"{page}:{number}: $ {command}\nexit code {status}; documented (-) and printed (+):")
    print("\n".join(difflib.unified_diff(expected, printed, lineterm="", n=100)))
    return False


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool-dir", required=True)
    parser.add_argument("--source-dir", required=True)
    parser.add_argument("page")
    options = parser.parse_args()
    ran = failed = 0
    with tempfile.TemporaryDirectory() as folder:
        os.symlink(os.path.join(options.source_dir, "examples"), os.path.join(folder, "examples"))
        for first_line, language, file_name, lines in blocks(options.page):
            if file_name:
                with open(os.path.join(folder, file_name), "w", encoding="utf-8") as target:
                    target.write("\n".join(lines) + "\n")
            elif language == "console":
                for number, command, expected in commands(first_line, lines):
                    ran += 1
                    failed += not check_command(options.page, number, command, expected, folder, options.tool_dir)
    print(f"{options.page}: {ran} commands, {failed} not as documented")
    return 0 if ran and not failed else 1


sys.exit(main())
