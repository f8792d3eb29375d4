#!/usr/bin/env python3
"""A load goes on by itself when its server fails: failover_test.py --tool ZTIMPORT --faulty ZTIMPORT_FAULTY

A primary and a synchronous standby run in temporary folders. The load, which knows both, is held in the middle of a group;
the primary is killed and the standby promoted. Then the former primary comes back, which the load must not take for the
primary although it is the first that its URL names, nor when it is the only one that answers. Afterwards two loads are
held in the same way, while the backend of one is killed, and the whole server of the other, which is started again once the
load has noticed. Whatever a load comes to is compared with its sources. Nothing depends on the time that anything takes.
Skipped (exit code 77) where there is no PostgreSQL.
"""
import argparse
import importlib.machinery
import importlib.util
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
RECORDS = 330
HANGS = 300
SETTINGS = {
    "listen_addresses": "",
    "fsync": "off",
    "full_page_writes": "off",
    "shared_buffers": "16MB",
    "wal_level": "replica",
    "max_wal_senders": "4",
    "log_min_messages": "log",
}
SCHEMA = """record_types:
  bug:
    prefix: BUG
    states: [NEW, OPEN]
    fields:
      source_id: {type: text, unique: true}
      votes: {type: integer}
      log: {type: history}
"""
CONFIGURATION = ('<configuration><import_data name="record"/><record_type name="bug"/><original_id name="source_id"/>'
                 '</configuration>')


def private_server():
    path = str(pathlib.Path(__file__).resolve().parents[3] / "scripts/private-server")
    loader = importlib.machinery.SourceFileLoader("private_server", path)
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("private_server", loader))
    loader.exec_module(module)
    return module


SERVER = private_server()


class Cluster:
    """One of the two servers, in a folder of its own with its socket and its data."""

    def __init__(self, folder, binaries, user):
        self.folder, self.binaries, self.user = folder, binaries, user
        self.process = None
        folder.mkdir()
        if user:
            os.chown(folder, user["user"], user["group"])

    def run(self, program, *arguments):
        subprocess.run([self.binaries / program, *arguments], check=True, stdout=subprocess.DEVNULL, cwd=self.folder,
                       **self.user)

    def start(self, **more):
        settings = [f"-c{name}={value}"
                    for name, value in {**SETTINGS, **more, "unix_socket_directories": self.folder}.items()]
        with open(self.folder / "log", "ab") as log:
            self.process = subprocess.Popen([self.binaries / "postgres", "-D", self.folder / "data", *settings],
                                            stdin=subprocess.DEVNULL, stdout=log, stderr=log, cwd=self.folder,
                                            start_new_session=True, **self.user)
        until("that a server answers", lambda: self.answers("SELECT 1") == "1", self.process)

    def psql(self, *arguments):
        return [self.binaries / "psql", "-XAtq", "-h", self.folder, "-U", "tester", "-d", "postgres", *arguments]

    def answers(self, query):
        done = subprocess.run(self.psql("-c", query), capture_output=True, text=True)
        return done.stdout.strip() if done.returncode == 0 else None

    def kill(self):
        """As a crash: at once, and without a word to the standby."""
        if self.process and self.process.poll() is None:
            self.process.send_signal(signal.SIGQUIT)
            self.process.wait(HANGS)


def until(what, holds, process=None):
    """Waits for what has to happen; the limit ends what hangs."""
    end = time.monotonic() + HANGS
    while not holds():
        if process and process.poll() is not None:
            sys.exit("a server does not start")
        if time.monotonic() > end:
            sys.exit(f"FAILED {what} does not come about")
        time.sleep(0.05)


def write_packets(folder, first=0):
    rows = []
    for i in range(first, first + RECORDS):
        votes = "many" if i == first + 150 else i
        rows.append(f'<record><field name="source_id">s{i}</field><field name="votes">{votes}</field>'
                    '<field name="log">1\t2020-01-01 00:00:00\tann\tsubmit\tnone\tNEW</field></record>')
    (folder / "schema.yaml").write_text(SCHEMA)
    (folder / "1.xml").write_text(CONFIGURATION)
    data = folder / f"from-{first}.xml"
    data.write_text("<records>\n" + "\n".join(rows) + "\n</records>\n")
    return [folder / "1.xml", data]


class HeldLoad:
    """A load that is held when it is about to put its first rejected record on the disk, its second group not committed."""

    def __init__(self, faulty, url, folder, sources, retry_for=86400):
        self.output = sources[-1].with_suffix(".said")
        with open(self.output, "w") as output:
            # One connection, which the server's processes are counted by. However long the server
            # is away, the load waits for it.
            self.process = subprocess.Popen([faulty, "load", url, "--rejects", folder / "rejects", "--workers", "1",
                                             "--retry-for", str(retry_for), *sources],
                                            stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                                            env={**os.environ, "ZT_FAULT": "sync:1:STOP"})
        _, status = os.waitpid(self.process.pid, os.WUNTRACED)
        expect("the load is held", os.WIFSTOPPED(status), self.said())

    def said(self):
        return self.output.read_text()

    def go_on(self):
        self.process.send_signal(signal.SIGCONT)

    def expect_end(self):
        expect("the load goes on to its end, with one record rejected", self.process.wait(HANGS) == 1, self.said())
        expect("the group was done again", "1 group of records was done again" in self.said(), self.said())


def expect(what, holds, shown=""):
    if not holds:
        sys.exit(f"FAILED {what}\n{shown}")


def check(arguments, folder, primary, standby):
    primary.run("initdb", "-D", primary.folder / "data", "-U", "tester", "-A", "trust", "-E", "UTF8", "-N",
                "--locale=C.UTF-8")
    primary.start()
    standby.run("pg_basebackup", "-D", standby.folder / "data", "-h", primary.folder, "-U", "tester", "-R", "-c", "fast",
                "--no-sync")
    standby.start()
    primary.answers("ALTER SYSTEM SET synchronous_standby_names = '*'")
    primary.answers("SELECT pg_reload_conf()")
    until("that the standby is a synchronous one",
          lambda: primary.answers("SELECT sync_state FROM pg_stat_replication") == "sync")

    url = f"postgresql://tester@/postgres?host={primary.folder},{standby.folder}&schema=ferry"
    sources = write_packets(folder)
    subprocess.run([arguments.tool, "init", url, folder / "schema.yaml"], check=True, stdout=subprocess.DEVNULL)
    load = HeldLoad(arguments.faulty, url + "&options=-clock_timeout%3D200s", folder, sources)
    expect("the first group is there", primary.answers("SELECT count(*) FROM ferry.bug") == "100")

    primary.kill()
    standby.run("pg_ctl", "promote", "-D", standby.folder / "data")
    # Whoever has the writers' lock makes the load wait, as soon as it has found the new primary.
    lock = subprocess.Popen(standby.psql(), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    lock.stdin.write("BEGIN; LOCK TABLE ferry.zt_journal; SELECT 1;\n")
    lock.stdin.flush()
    expect("the journal is locked", lock.stdout.readline() == "1\n")
    load.go_on()
    waiting = "SELECT pid FROM pg_stat_activity WHERE application_name = 'ztimport' AND wait_event_type = 'Lock'"
    until("that the load waits for the lock", lambda: standby.answers(waiting))

    primary.start(synchronous_standby_names="")
    expect("the former primary takes changes", primary.answers("SELECT pg_is_in_recovery()") == "f")
    standby.answers(f"SELECT pg_terminate_backend(({waiting}), 100000)")
    lock.communicate("COMMIT;\n", HANGS)
    load.expect_end()
    text = load.said()
    expect("the load says that it was disturbed", text.count("connected again") >= 2, text)
    expect_only_the_rejected_missing(arguments, standby, folder, sources)
    expect_counts(standby, 1)
    expect("nothing was written to the former one", primary.answers("SELECT count(*) FROM ferry.bug") == "100", text)
    primary.kill()


def check_former_primary_alone(arguments, folder, primary, standby):
    url = f"postgresql://tester@/postgres?host={primary.folder},{standby.folder}&schema=ferry"
    sources = write_packets(folder, 3000)
    load = HeldLoad(arguments.faulty, url, folder, sources, retry_for=1)
    standby.kill()
    primary.start(synchronous_standby_names="")
    load.go_on()
    code = load.process.wait(HANGS)
    text = load.said()
    expect("the load ends", code == 3 and "there is no other one" in text, text)
    expect("it says why", "is a former primary that was started again: it stands in the timeline 1, and timeline 2 was "
           "written to before" in text, text)
    primary.kill()
    standby.start()
    done = subprocess.run([arguments.tool, "load", url, "--rejects", folder / "rejects", *sources], capture_output=True,
                          text=True)
    expect("the same command goes on", done.returncode == 1 and "goes on behind record 100," in done.stdout + done.stderr,
           done.stdout + done.stderr)
    expect_only_the_rejected_missing(arguments, standby, folder, sources)
    expect_counts(standby, 2)


def expect_counts(server, loads):
    """Of whole loads: each record once, with the numbers that an undisturbed load gives, and its history."""
    every = loads * (RECORDS - 1)
    shown = server.answers("SELECT (SELECT count(DISTINCT source_id) || ' ' || count(*) || ' ' || max(dbid) FROM ferry.bug) "
                           "|| ' ' || (SELECT count(*) || ' ' || count(DISTINCT record) FROM ferry.zt_history)")
    expect("all records are there once", shown == " ".join(5 * [str(every)]), shown)


def expect_only_the_rejected_missing(arguments, server, folder, sources):
    report = folder / "verify.json"
    url = f"postgresql://tester@/postgres?host={server.folder}&schema=ferry"
    done = subprocess.run([arguments.tool, "verify", url, "--report", report, *sources], capture_output=True, text=True)
    shown = done.stdout + done.stderr
    expect("the comparison ends", done.returncode == 1, shown)
    found = json.loads(report.read_text())
    expect("all but one record are as in the source", found["compared"] == found["types"][0]["equal"] == RECORDS - 1, shown)
    expect("that one was rejected", [(difference["record"], difference["problem"]) for difference in found["differences"]]
           == [(151, "missing from the database")] and found["missing"] == 1, shown)
    expect("the database keeps its rules", found["faults"] == [], shown)


def check_failures_of_one(arguments, folder, server):
    url = f"postgresql://tester@/postgres?host={server.folder}&schema=ferry"
    sources = write_packets(folder, 1000)
    load = HeldLoad(arguments.faulty, url, folder, sources)
    backend = server.answers("SELECT pid FROM pg_stat_activity WHERE application_name = 'ztimport'")
    os.kill(int(backend), signal.SIGKILL)
    load.go_on()
    load.expect_end()
    expect_only_the_rejected_missing(arguments, server, folder, sources)

    sources = write_packets(folder, 2000)
    load = HeldLoad(arguments.faulty, url, folder, sources)
    server.kill()
    load.go_on()
    until("that the load misses the server", lambda: "was lost" in load.said())
    server.start()
    load.expect_end()
    expect_only_the_rejected_missing(arguments, server, folder, sources)
    expect_counts(server, 4)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", required=True)
    parser.add_argument("--faulty", required=True)
    arguments = parser.parse_args()
    binaries = SERVER.programs()
    if binaries is None:
        print("there is no PostgreSQL")
        sys.exit(SKIPPED)
    user = SERVER.user_of_server()
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zt-failover-"))
    folder.chmod(0o755)
    primary, standby = (Cluster(folder / name, binaries, user) for name in ("first", "second"))
    try:
        check(arguments, folder, primary, standby)
        check_former_primary_alone(arguments, folder, primary, standby)
        check_failures_of_one(arguments, folder, standby)
    finally:
        for cluster in (primary, standby):
            cluster.kill()
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()
