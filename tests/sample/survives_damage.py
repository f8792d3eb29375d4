#!/usr/bin/env python3
"""Damages a copy of the sample data in every way that loses or rejects something, and sees that check tells it all, that
load rejects just that, that verify finds it, and that the rejects, mended and loaded, complete the migration:
survives_damage.py --tool ZTIMPORT --data-root DIR
"""
import json
import re
import shutil
import sys

import sample as sample_tracker

RECORD = re.compile(r"<record>.*?</record>", re.DOTALL)
SOURCE_ID = re.compile(r'<field name="(?:source_id|login|code|name)">([^<]*)</field>')
LATE_LINE = "late-{}\t2016-01-01 00:00:00\tuser00001\ttransition\tnew\tclosed\n"


class Packets:
    """A copy of the packets whose records can be edited."""

    def __init__(self, folder):
        self.folder = folder
        self.originals = {}

    def records(self, name):
        text = (self.folder / name).read_text(encoding="utf-8")
        return {SOURCE_ID.search(record).group(1): record for record in RECORD.findall(text)}

    def edit(self, name, source_id, change):
        """Replaces a record's text by change(text)."""
        path = self.folder / name
        text = path.read_text(encoding="utf-8")
        before = self.records(name)[source_id]
        after = change(before)
        assert after != before, (name, source_id)
        self.originals[name, source_id] = before
        path.write_text(text.replace(before, after), encoding="utf-8", errors="surrogateescape")

    def add(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8")


def put(field, value):
    return lambda record: re.sub(rf'(<field name="{field}">)[^<]*', lambda found: found.group(1) + value, record)


def append(text):
    return lambda record: record.replace("</record>", text + "</record>")


def damage_silently(packets):
    """Damages that load does not notice. Returns what check is to find: {(kind, file, source id)}."""
    bugs = list(packets.records("009-bugs.xml"))
    histories = list(packets.records("013-history.xml"))
    attachments = packets.records("015-attachments.xml")
    edits = [
        ("long-history-line", "013-history.xml", histories[10],
         lambda record: record.replace("</field>\n</record>", "\tand a comment</field>\n</record>")),
        ("history-beyond-limit", "013-history.xml", histories[11],
         lambda record: re.sub(r'(<field name="history">)',
                               r"\1" + "".join(LATE_LINE.format(i) for i in range(501)), record)),
        ("incomplete-attachment", "015-attachments.xml", list(attachments)[3],
         lambda record: record.replace("</field>\n</record>", "\none more\nname.txt</field>\n</record>")),
        ("nameless-field", "009-bugs.xml", bugs[20], append("<field>nobody knows</field>")),
        ("nested-field", "009-bugs.xml", bugs[21],
         append('<field name="title"><field name="milestone">inner</field></field>')),
        ("changed-text", "009-bugs.xml", bugs[22], put("title", "less is written &amp;lt; in markup")),
        ("skipped-field", "009-bugs.xml", bugs[23], append('<field name="dbid">77</field>')),
        ("repeated-field", "009-bugs.xml", bugs[24], append('<field name="title">Another title</field>')),
    ]
    for _, name, source_id, change in edits:
        packets.edit(name, source_id, change)
    packets.edit("009-bugs.xml", bugs[25], lambda record: record.replace("<record>", '<record id="25">'))
    packets.add("009-bugs-none.xml", "<records></records>")
    packets.add("016-config-nothing.xml", '<configuration><import_data name="recrods"/><record_type name="bug"/>'
                '<original_id name="source_id"/><record_reference_mapping_list>'
                '<mapping target_field="overseer" reference_field="login"/></record_reference_mapping_list>'
                "</configuration>")
    lost = {(kind, name, source_id) for kind, name, source_id, _ in edits}
    lost |= {("unseen-record", "009-bugs.xml", ""), ("empty-packet", "009-bugs-none.xml", ""),
             ("nothing-imported", "016-config-nothing.xml", ""), ("unused-mapping", "016-config-nothing.xml", "")}
    return lost, bugs[25]


def damage_openly(packets):
    """Damages for which load rejects the record. Returns {(file, source id)}."""
    bugs = list(packets.records("009-bugs.xml"))
    edits = [
        ("009-bugs.xml", bugs[40], put("created", "yesterday")),
        ("009-bugs.xml", bugs[41], put("component", "C9999")),
        ("009-bugs.xml", bugs[42], put("state", "sleeping")),
        ("009-bugs.xml", bugs[43], put("product", "P99")),
        ("009-bugs.xml", bugs[44], lambda record: "</feild>".join(record.rsplit("</field>", 1))),
        ("009-bugs.xml", bugs[45], append('<field name="headline">no such field</field>')),
        ("013-history.xml", list(packets.records("013-history.xml"))[60],
         lambda record: re.sub(r"\t\d{4}-\d\d-\d\d ", "\tsome day ", record, count=1)),
        ("015-attachments.xml", list(packets.records("015-attachments.xml"))[7],
         lambda record: re.sub(r"\n[^<\n]*/[^<\n]*\n", "\nno/such/file.txt\n", record, count=1)),
        ("011-duplicates.xml", list(packets.records("011-duplicates.xml"))[5], put("duplicate_of", "core-0")),
    ]
    for name, source_id, change in edits:
        packets.edit(name, source_id, change)
    return {(name, source_id) for name, source_id, _ in edits}


def place(entry):
    return entry["file"].rsplit("/", 1)[-1], entry["source_id"]


def check_rehearsal(sample, packets, lost, openly, expect):
    """What check says; returns its rejects."""
    packets.add("000-before.xml", "<records>" + next(iter(packets.records("001-users.xml").values())) + "</records>")
    before = sample.dump()
    status, _, report = sample.run("check", packets.folder)
    expect.equal("exit code of check", status, 1)
    expect.true("check leaves the database as it was", sample.dump() == before)
    found = {(loss["kind"], *place(loss)) for loss in report["losses"]}
    expect.equal("losses that check does not report", sorted((lost | {("no-configuration", "000-before.xml", "")}) - found),
                 [])
    rejected = {place(reject) for reject in report["rejects"]}
    expect.equal("rejects that check does not report", sorted(openly - rejected), [])
    (packets.folder / "000-before.xml").unlink()
    return {(place(reject), reject["error"]) for reject in report["rejects"]}


def check_load(sample, packets, rehearsed, expect):
    rejects = sample.folder / "rejects"
    status, _, report = sample.run("load", "--rejects", rejects, packets.folder)
    expect.equal("exit code of load", status, 1)
    expect.true("load rejects what check said, for the same reasons",
                {(place(reject), reject["error"]) for reject in report["rejects"]} == rehearsed)
    waiting = [reject for reject in report["rejects"] if "It waits for" in reject["error"]]
    expect.true("rejects say what they wait for", len(waiting) > 3)
    expect.true("and where that was rejected", any("rejected too" in reject["error"] for reject in waiting))
    return rejects


def packet_of(configuration):
    """The packet that the rejects under a configuration come from."""
    if '<import_data name="record"/>' in configuration:
        return "011-duplicates.xml" if '<updaterecord name="TRUE"/>' in configuration else "009-bugs.xml"
    return "013-history.xml" if '<import_data name="history"/>' in configuration else "015-attachments.xml"


def mend(rejects, packets):
    """Puts the records as they were before the damage into the folder of rejects."""
    mended = 0
    for path in sorted(rejects.glob("*-records.xml")):
        configuration = (rejects / path.name.replace("records", "configuration")).read_text(encoding="utf-8")
        text = path.read_text(encoding="utf-8")
        for (name, source_id), original in packets.originals.items():
            if name == packet_of(configuration):
                start = text.find(f'<record>\n  <field name="source_id">{source_id}</')
                if start >= 0:
                    end = text.index("</record>", start) + len("</record>")
                    text = text[:start] + original + text[end:]
                    mended += 1
        path.write_text(text, encoding="utf-8")
    return mended


def check_damaged_database(sample, expect):
    """What was changed behind the tool's back breaks the database's own rules, whatever the sources say."""
    damages = ["UPDATE bug SET id = 'BvG' || substr(id, 4) WHERE dbid = 369",
               "UPDATE zt_history SET field = 'title' WHERE entry = 1 AND record = (SELECT min(record) FROM zt_history)",
               "UPDATE zt_duplicate SET action_time = 'noon' WHERE duplicate = (SELECT min(duplicate) FROM zt_duplicate)",
               "UPDATE bug__keywords SET position = position + 100 WHERE record = (SELECT max(record) FROM bug__keywords)",
               "UPDATE zt_attachment SET filesize = filesize + 1 WHERE dbid = 1"]
    for damage in damages:
        sample.change(damage)
    status, output, report = sample.run("verify", "--quiet", sample.packets)
    expect.equal("exit code of verify on a damaged database", status, 1)
    expect.equal("faults that verify finds", len(report["faults"]), len(damages))
    expect.true("verify tells them", output.count("damaged: ") == len(damages))


def test(sample, expect):
    folder = sample.folder / "packets"
    shutil.copytree(sample.packets, folder)
    packets = Packets(folder)
    sound = packets.records("009-bugs.xml")
    lost, unseen = damage_silently(packets)
    openly = damage_openly(packets)
    sample.init()
    rehearsed = check_rehearsal(sample, packets, lost, openly, expect)
    rejects = check_load(sample, packets, rehearsed, expect)

    # Against the damaged sources: rejected and lost is what differs.
    status, output, report = sample.run("verify", folder)
    expect.equal("exit code of verify on damaged sources", status, 1)
    expect.true("verify says so", "NOT verified" in output)
    differing = {place(difference)[1] for difference in report["differences"]}
    expect.equal("rejected records that verify does not miss", sorted({source_id for _, source_id in openly} - differing),
                 [])
    expect.equal("losses that verify does not find",
                 sorted({source_id for _, _, source_id in lost if source_id} - differing), [])

    # The record that was overlooked needs another packet; what was rejected, the folder of rejects.
    packets.add("overlooked.xml", "<records>" + sound[unseen] + "</records>")
    status, _, _ = sample.run("load", folder / "008-config-bugs.xml", folder / "overlooked.xml")
    expect.equal("exit code of the load of the overlooked record", status, 0)
    nameless = 1  # is lost and rejected
    expect.equal("mended records", mend(rejects, packets), len(openly) + nameless)
    status, _, report = sample.run("load", rejects)
    expect.equal("the load of mended rejects", (status, report["rejects"]), (0, []))

    # Against the sound sources: only what was lost silently differs.
    status, _, report = sample.run("verify", sample.packets)
    expect.equal("exit code of verify on the sound sources", status, 1)
    silently = {source_id for _, _, source_id in lost if source_id}
    differing = {place(difference)[1] for difference in report["differences"]}
    expect.equal("records that differ and were not damaged silently", sorted(differing - silently), [])
    expect.equal("faults of the database", report["faults"], [])
    check_damaged_database(sample, expect)
    expect.equal("bugs in the database", sample.counts()["bug"], sample.expected_counts()["bug"])
    print(json.dumps(sample.counts()))


sys.exit(sample_tracker.main(test))
