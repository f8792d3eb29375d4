#!/usr/bin/env python3
"""Makes the man page of ztimport from the page of the documentation about its command line.

man_page.py docs/command-line.md VERSION FILE    writes ztimport(1) to FILE, as troff

Knows what that page is written in: headings, paragraphs, lists, tables, fenced blocks, code, emphasis and links. Anything
else is an error, so that nothing of the page is lost unseen.
"""
import re
import sys

FENCE = re.compile(r"^```(\S*)")
HEADING = re.compile(r"^(#+) (.*)$")
ITEM = re.compile(r"^(?:-|\d+\.) ")
# Code, emphasis, a link: [text](target).
INLINE = re.compile(r"`(?P<code>[^`]+)`|\*(?P<emphasis>[^*]+)\*|\[(?P<text>[^\]]+)\]\([^)]*\)")
# What concerns the page as such.
LEFT_OUT = re.compile(r"^The commands on this page are run by a test")


def plain(text):
    """Text that troff prints as it is."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga")
    return re.sub(r"[^\x00-\x7f]", lambda found: f"\\[u{ord(found[0]):04X}]", text)


def inline(text):
    out = []
    end = 0
    for found in INLINE.finditer(text):
        out.append(plain(text[end:found.start()]))
        if found["code"] is not None:
            out.append(f"\\fB{plain(found['code'])}\\fR")
        elif found["emphasis"] is not None:
            out.append(f"\\fI{plain(found['emphasis'])}\\fR")
        else:
            out.append(inline(found["text"]))
        end = found.end()
    out.append(plain(text[end:]))
    return "".join(out)


def line_of(text):
    """A line of text; one that begins with a dot would be a request."""
    return "\\&" + text if text.startswith(".") else text


def cells(row):
    # A bar in a cell is written "\|".
    return [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", row.strip().strip("|"))]


def table(rows):
    """Each row as a term, its first cell, with what is said of it."""
    if len(rows) < 3 or not re.fullmatch(r"[|\s:-]+", rows[1]):
        sys.exit(f"not a table: {rows[0]}")
    for row in rows[2:]:
        first, *others = cells(row)
        yield ".TP"
        # An option with its value: the value is what the reader puts there.
        yield line_of(re.sub(r"\\fB(\\-\\-[a-z\\-]+) ([A-Z]+)\\fR", r"\\fB\1\\fR \\fI\2\\fR", inline(first)))
        yield line_of(inline("; ".join(others)))


def code_block(lines):
    return [".RS 4", ".nf", *(line_of(plain(line)) for line in lines), ".fi", ".RE"]


def blocks(page):
    """Yields (kind, lines) of the page's parts: "heading", "code", "table", "list", "paragraph"."""
    lines = iter(page.split("\n"))
    kind, held = None, []
    for line in lines:
        fence = FENCE.match(line)
        new_kind = ("code" if fence else "heading" if HEADING.match(line) else
                    "table" if line.startswith("|") else "list" if ITEM.match(line) else
                    kind if kind == "list" and line.startswith("  ") else "paragraph" if line.strip() else None)
        if re.match(r"^([*+] |\s+(?:[-*+]|\d+\.) |>|<)", line):
            sys.exit(f"the man page knows no such markup: {line}")
        if kind is not None and (new_kind != kind or kind == "heading"):
            yield kind, held
            held = []
        kind = new_kind
        if fence:
            content = []
            for inner in lines:
                if inner == "```":
                    break
                content.append(inner)
            yield "code", content
            kind = None
        elif kind is not None:
            held.append(line)
    if kind is not None:
        yield kind, held


def items(lines):
    """The items of a list, each with the lines that go on with it."""
    held = []
    for line in lines:
        if ITEM.match(line):
            held.append(ITEM.sub("", line))
        else:
            held[-1] += " " + line.strip()
    for item in held:
        yield ".IP \\(bu 2"
        yield line_of(inline(item))


def body(page):
    synopsis = True
    after_heading = False
    for kind, lines in blocks(page):
        if kind == "heading":
            level, title = HEADING.match(lines[0]).groups()
            if level != "#":
                yield f".{'SH' if level == '##' else 'SS'} \"{plain(title.upper() if level == '##' else title)}\""
        elif kind == "code" and synopsis:
            synopsis = False
            yield ".SH SYNOPSIS"
            yield ".nf"
            for line in lines:
                usage = re.split(r" {2,}(?=[a-z])", line)[0]
                yield re.sub(r"^(ztimport [a-z]+) *", r"\\fB\1\\fR ", plain(usage))
            yield "\\fBztimport\\fR \\-\\-help | \\-\\-version"
            yield "\\fBztimport\\fR \\fICOMMAND\\fR \\-\\-help"
            yield ".fi"
            yield ".SH DESCRIPTION"
            for line in lines:
                usage, effect = re.split(r" {2,}(?=[a-z])", line)[-2:]
                yield ".TP"
                yield f"\\fB{plain(usage.split()[1])}\\fR"
                yield line_of(inline(effect))
        elif kind == "code":
            yield from code_block(lines)
        elif kind == "table":
            yield from table(lines)
        elif kind == "list":
            yield from items(lines)
        elif not LEFT_OUT.match(lines[0]):
            if not after_heading:
                yield ".PP"
            yield line_of(inline(" ".join(lines)))
        after_heading = kind == "heading"


def main():
    source, version, target = sys.argv[1:]
    with open(source, encoding="utf-8") as file:
        page = file.read()
    lines = ['.\\" Made from docs/command-line.md.',
             f'.TH ZTIMPORT 1 "" "ztimport {version}" "User Commands"',
             ".SH NAME",
             "ztimport \\- move tracker data into a record database, and prove that it is there",
             *body(page),
             '.SH "SEE ALSO"',
             "The documentation in /usr/share/doc/ztimporter/docs: packets, schema files, the tables of a database,",
             "a migration from rehearsal to sign\\-off."]
    with open(target, "w", encoding="utf-8") as file:
        file.writelines(line + "\n" for line in lines)


if __name__ == "__main__":
    main()
