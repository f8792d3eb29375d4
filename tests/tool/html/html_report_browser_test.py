#!/usr/bin/env python3
"""Shows the pages about a load, a comparison and a survey in a browser and looks at them: html_report_browser_test.py --tool ZTIMPORT

Exit code 77 says that there is no Chromium.
"""
import argparse
import json
import pathlib
import struct
import subprocess
import sys
import tempfile
import zlib

sys.dont_write_bytecode = True
import chromium

SKIPPED = 77
WIDTHS = [1280, 961, 768, 375, 320]
A4_WIDTH = 673  # pixels between the margins of the printed page
LOAD_SECTIONS = ["Totals", "What to do next", "By record type", "Rejected records", "Silent losses",
                 "Records over time", "What was run"]
VERIFY_SECTIONS = ["Totals", "What to do next", "By record type", "Differences", "The database itself",
                   "What the loads did", "What was run"]
SURVEY_SECTIONS = ["Totals", "What to do next", "Files"]
EVIL = "<script>window.evil = true</script><img src=\"http://evil.example/x.png\" onerror=\"window.evil = true\">"
SCHEMA = """record_types:
  bug:
    prefix: BUG
    states: [NEW, CLOSED]
    fields:
      source_id: {type: text, unique: true}
      title: {type: text, max_length: 120, required: true}
      votes: {type: integer}
"""
CONFIGURATION = ('<?xml version="1.0" encoding="UTF-8"?>\n<configuration><import_data name="record"/>'
                 '<record_type name="bug"/><original_id name="source_id"/></configuration>\n')

# Of all texts, the lowest ratio of the contrast with the background to the contrast that is needed,
# and where it is.
CONTRAST = r"""(() => {
  const rgba = text => (text.match(/[\d.]+/g) || []).map(Number);
  const light = ([r, g, b]) => [r, g, b].map(c => c / 255)
      .map(c => c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
      .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
  const behind = element => {
    for (; element; element = element.parentElement) {
      const color = rgba(getComputedStyle(element).backgroundColor);
      if (color.length === 3 || color[3] === 1) return color;
    }
    return [255, 255, 255];
  };
  let worst = {contrast: 21, text: ''};
  const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (texts.nextNode()) {
    const element = texts.currentNode.parentElement;
    if (!texts.currentNode.data.trim() || !element.getClientRects().length) continue;
    const style = getComputedStyle(element);
    const color = element.closest('svg') ? style.fill : style.color;
    const [a, b] = [light(rgba(color)), light(behind(element))];
    const contrast = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    if (contrast < worst.contrast) worst = {contrast, text: texts.currentNode.data};
  }
  return worst;
})()"""


def field(name, value):
    escaped = value.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")
    return f'<field name="{name}">{escaped}</field>'


def bug(number):
    """A bug; some are wrong, in three ways."""
    title, votes = f"Bug number {number}", str(number % 40)
    if number % 25 == 7:
        votes = EVIL
    elif number % 62 == 3:
        votes = f"{number} votes"
    elif number % 125 == 11:
        title = "word " * 30 + str(number)
    return f"<record>{field('source_id', f'core-{number}')}{field('title', title)}{field('votes', votes)}</record>\n"


class Tracker:
    """A small tracker of generated bugs, in a folder whose name is long."""

    def __init__(self, tool, folder):
        self.tool = tool
        self.folder = folder / ("a folder with a name of many words " + "x" * 100)
        self.packets = self.folder / "packets"
        self.packets.mkdir(parents=True)
        (self.folder / "schema.yaml").write_text(SCHEMA)
        (self.packets / "1-configuration.xml").write_text(CONFIGURATION)
        records = "".join(bug(number) for number in range(1, 1001))
        (self.packets / "2-bugs.xml").write_text(f'<?xml version="1.0" encoding="UTF-8"?>\n<records>\n{records}</records>\n')

    def ztimport(self, *arguments):
        done = subprocess.run([self.tool, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False, timeout=1500)
        print(f"$ ztimport {arguments[0]} ...: exit code {done.returncode}\n{done.stdout}")
        return done.returncode

    def load(self):
        """Loads all; returns the exit code, the path of the page and the JSON report."""
        self.ztimport("init", self.folder / "tracker.db", self.folder / "schema.yaml")
        return self.run("load", "--rejects", self.folder / "rejects")

    def run(self, command, *options):
        """Runs a command on the packets; returns the exit code, the path of the page and the JSON report."""
        page, report = (self.folder / (command + suffix) for suffix in (".html", ".json"))
        status = self.ztimport(command, self.folder / "tracker.db", self.packets, "--html", page, "--report", report,
                               *options)
        return status, page, json.loads(report.read_text())


def survey(tool, folder):
    """Surveys a small export with a long name, long values and an attack; returns the exit code and the page."""
    export = folder / ("export " + "x" * 100)
    export.mkdir()
    rows = "".join(f"{number},{'word ' * 10}{number},{'open' if number % 3 else 'closed'}\n" for number in range(600))
    (export / "bugs.csv").write_text(f"number,{'title' * 20},state\n{rows}")
    (export / "notes.jsonl").write_text(json.dumps({EVIL: EVIL, "deep": {"list": [{"at": "2020-01-02"}]}}) + "\n")
    page = folder / "survey.html"
    done = subprocess.run([tool, "survey", export, "--html", page], stdout=subprocess.DEVNULL, check=False, timeout=1500)
    return done.returncode, page


class Expectations:
    def __init__(self):
        self.failed = 0

    def that(self, what, holds, found=""):
        if not holds:
            self.failed += 1
            print(f"FAILED {what}: {found!r}")

    def equal(self, what, actual, expected):
        self.that(what, actual == expected, (actual, expected))


def texts(browser, selector):
    return browser.evaluate(f"[...document.querySelectorAll({json.dumps(selector)})].map(e => e.textContent)")


def numbers(browser, selector):
    return [int(text.replace(",", "")) for text in texts(browser, selector)]


def check_content(browser, report, expect):
    expect.equal("number of main headings", len(texts(browser, "h1")), 1)
    expect.equal("sections", texts(browser, "section > h2"), LOAD_SECTIONS)
    totals = [report[name] for name in ("read", "created", "updated", "rejected", "skipped", "history", "attachments",
                                        "duplicates")]
    expect.equal("totals as in the report", numbers(browser, "#totals dd"), totals)
    expect.equal("the row of the one record type", numbers(browser, "#types tbody tr:first-child td"), totals)
    expect.equal("the row of sums", numbers(browser, "#types tfoot td"), totals)
    sentence = texts(browser, ".verdict .sentence")[0]
    expect.that("the verdict counts the rejected records", f"{report['rejected']} of 1,000 records" in sentence, sentence)


def check_rejects(browser, report, expect):
    counts = numbers(browser, "#rejects .count")
    expect.equal("causes", len(counts), 3)
    expect.equal("rejected records of all causes", sum(counts), report["rejected"])
    expect.equal("examples of each cause", browser.evaluate(
        "[...document.querySelectorAll('#rejects table')].map(t => t.tBodies[0].rows.length)"), [5, 5, 5])
    first = browser.evaluate("[...document.querySelector('#rejects tbody tr').cells].map(c => c.textContent)")
    rejected = report["rejects"][[entry["source_id"] for entry in report["rejects"]].index(first[3])]
    expect.equal("file, record and reason of an example", (first[0], first[1], first[4]),
                 (rejected["file"], str(rejected["record"]), rejected["error"]))
    expect.that("markup in the data is shown as it stands", EVIL in first[4], first[4])


def check_accessibility(browser, expect):
    expect.equal("tables without a caption",
                 browser.evaluate("[...document.querySelectorAll('table')].filter(t => !t.caption).length"), 0)
    expect.equal("language", browser.evaluate("document.documentElement.lang"), "en")


def check_chart(browser, expect):
    points = browser.evaluate("document.querySelector('.curve').points.numberOfItems")
    # A fast machine takes so little time that the curve is one step.
    expect.that("the curve has points", points >= 2, points)
    box = browser.evaluate("(() => { const b = document.querySelector('.area').getBoundingClientRect();"
                           " return [b.width, b.height]; })()")
    expect.that("the curve is drawn over the width of the page", box[0] > 600 and box[1] > 20, box)


def check_harmless(browser, pages, expect):
    expect.equal("scripts", browser.evaluate("document.scripts.length"), 0)
    expect.equal("what scripts in the data did", browser.evaluate("typeof window.evil"), "undefined")
    expect.equal("what was fetched", set(browser.requests), {page.resolve().as_uri() for page in pages})


def check_recorder(browser, folder, expect):
    """A page that fetches something is found out: what the test of the report's page relies on."""
    page = folder / "fetching.html"
    page.write_text('<img src="http://evil.example/x.png">')
    browser.open(page, 800)
    expect.that("fetching is noticed", "http://evil.example/x.png" in browser.requests, browser.requests)


def check_width(browser, page, width, expect, **look):
    browser.open(page, width, **look)
    found = browser.evaluate("[document.documentElement.scrollWidth, innerWidth]")
    expect.that(f"everything fits into a width of {width} {look}", found == [width, width], found)
    worst = browser.evaluate(CONTRAST)
    expect.that(f"texts can be read at a width of {width} {look}", worst["contrast"] >= 4.5, worst)


def check_screenshot(browser, what, width, expect):
    """The picture has the page's size, and many more lines that differ than a page without text has."""
    height = browser.evaluate("document.documentElement.scrollHeight")
    png = browser.screenshot()
    expect.equal(f"size of the screenshot {what}", struct.unpack(">II", png[16:24]), (width, height))
    compressed, at = b"", 8
    while at < len(png):
        length, kind = struct.unpack(">I4s", png[at:at + 8])
        compressed += png[at + 8:at + 8 + length] if kind == b"IDAT" else b""
        at += length + 12
    pixels = zlib.decompress(compressed)
    line = len(pixels) // height
    different = len({pixels[start:start + line] for start in range(0, len(pixels), line)})
    expect.that(f"the screenshot {what} is not blank", different > height // 10, (different, height))


def check_verify_content(browser, report, expect):
    expect.equal("sections of the comparison", texts(browser, "section > h2"), VERIFY_SECTIONS)
    equal = report["compared"] - report["differing"]
    expect.equal("totals of the comparison", numbers(browser, "#totals .figures:not(.minor) dd"),
                 [report["read"], report["compared"], equal, report["differing"], report["missing"], len(report["faults"])])
    expect.equal("differences of all kinds", sum(numbers(browser, "#differences .count")), len(report["differences"]))
    expect.equal("state", texts(browser, ".verdict .state"), ["Not verified"])


def check_look(browser, page, expect):
    for width in WIDTHS:
        for dark in (False, True):
            check_width(browser, page, width, expect, dark=dark)
            if width in (1280, 375):
                check_screenshot(browser, f"{width} pixels wide, dark: {dark}", width, expect)
    check_width(browser, page, A4_WIDTH, expect, medium="print")


def check_load_page(browser, page, report, expect):
    browser.open(page, 1280)
    check_content(browser, report, expect)
    check_rejects(browser, report, expect)
    check_accessibility(browser, expect)
    check_chart(browser, expect)
    expect.that("the chart has a text alternative",
                browser.evaluate("document.querySelector('svg[role=img]').getAttribute('aria-label')"))
    check_look(browser, page, expect)


def check_verify_page(browser, page, report, expect):
    browser.open(page, 1280)
    check_verify_content(browser, report, expect)
    check_accessibility(browser, expect)
    check_look(browser, page, expect)


def check_survey_page(browser, page, expect):
    browser.open(page, 1280)
    expect.equal("first sections of the survey", texts(browser, "section > h2")[:3], SURVEY_SECTIONS)
    expect.equal("totals of the survey", numbers(browser, "#totals dd"), [2, 601, 0, 8, 0])
    check_accessibility(browser, expect)
    check_look(browser, page, expect)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool", required=True, type=pathlib.Path)
    options = parser.parse_args()
    path = chromium.find()
    if path is None:
        print("skipped: Chromium is not installed")
        return SKIPPED
    expect = Expectations()
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as name:
        folder = pathlib.Path(name)
        tracker = Tracker(options.tool, folder)
        loaded, load_page, load_report = tracker.load()
        verified, verify_page, verify_report = tracker.run("verify")
        surveyed, survey_page = survey(options.tool, folder)
        expect.equal("exit codes of the load, the comparison and the survey", (loaded, verified, surveyed), (1, 1, 0))
        with chromium.Chromium(path, folder / "profile") as browser:
            check_load_page(browser, load_page, load_report, expect)
            check_verify_page(browser, verify_page, verify_report, expect)
            check_survey_page(browser, survey_page, expect)
            check_harmless(browser, [load_page, verify_page, survey_page], expect)
            check_recorder(browser, folder, expect)
    print(f"{expect.failed} expectations failed")
    return 1 if expect.failed else 0


sys.exit(main())
