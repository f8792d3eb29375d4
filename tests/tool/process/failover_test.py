#!/usr/bin/env python3
"""A load goes on by itself when a standby takes over: failover_test.py --tool ZTIMPORT --faulty ZTIMPORT_FAULTY

A primary and a synchronous standby run in temporary folders. The load, which knows both, is held in the middle of a group;
the primary is killed and the standby promoted. Then the former primary comes back, which the load must not take for the
primary although it is the first that its URL names. Nothing depends on the time that anything takes. Skipped (exit code 77)
where there is no PostgreSQL.
"""
import argparse
import importlib.machinery
import importlib.util
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


def write_packets(folder):
    rows = []
    for i in range(RECORDS):
        votes = "many" if i == 150 else i
        rows.append(f'<record><field name="source_id">s{i}</field><field name="votes">{votes}</field>'
                    '<field name="log">1\t2020-01-01 00:00:00\tann\tsubmit\tnone\tNEW</field></record>')
    (folder / "schema.yaml").write_text(SCHEMA)
    (folder / "1.xml").write_text(CONFIGURATION)
    (folder / "2.xml").write_text("<records>\n" + "\n".join(rows) + "\n</records>\n")
    return [folder / "1.xml", folder / "2.xml"]


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
    said = open(folder / "said", "w+")
    # It is held when it is about to put its first rejected record on the disk, with the second group not committed.
    load = subprocess.Popen([arguments.faulty, "load", url + "&options=-clock_timeout%3D200s", "--rejects",
                             folder / "rejects", *sources],
                            stdin=subprocess.DEVNULL, stdout=said, stderr=subprocess.STDOUT,
                            env={**os.environ, "ZT_FAULT": "sync:1:STOP"})
    _, status = os.waitpid(load.pid, os.WUNTRACED)
    expect("the load is held", os.WIFSTOPPED(status), (folder / "said").read_text())
    expect("the first group is there", primary.answers("SELECT count(*) FROM ferry.bug") == "100")

    primary.kill()
    standby.run("pg_ctl", "promote", "-D", standby.folder / "data")
    # Whoever has the writers' lock makes the load wait, as soon as it has found the new primary.
    lock = subprocess.Popen(standby.psql(), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    lock.stdin.write("BEGIN; LOCK TABLE ferry.zt_journal; SELECT 1;\n")
    lock.stdin.flush()
    expect("the journal is locked", lock.stdout.readline() == "1\n")
    load.send_signal(signal.SIGCONT)
    waiting = "SELECT pid FROM pg_stat_activity WHERE application_name = 'ztimport' AND wait_event_type = 'Lock'"
    until("that the load waits for the lock", lambda: standby.answers(waiting))

    primary.start(synchronous_standby_names="")
    expect("the former primary takes changes", primary.answers("SELECT pg_is_in_recovery()") == "f")
    standby.answers(f"SELECT pg_terminate_backend(({waiting}), 100000)")
    lock.communicate("COMMIT;\n", HANGS)
    code = load.wait(HANGS)
    text = (folder / "said").read_text()
    expect("the load goes on to its end", code == 1, text)
    expect("the load says that it was disturbed", text.count("connected again") >= 2, text)
    expect("all records are at the new primary",
           standby.answers("SELECT count(*) || ' ' || max(dbid) FROM ferry.bug") == f"{RECORDS - 1} {RECORDS - 1}", text)
    expect("nothing was written to the former one", primary.answers("SELECT count(*) FROM ferry.bug") == "100", text)
    primary.kill()
    verify = subprocess.run([arguments.tool, "verify", url, *sources], capture_output=True, text=True)
    expect("only the rejected record is missing",
           verify.returncode == 1 and "s150" in verify.stdout + verify.stderr, verify.stdout + verify.stderr)


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
    finally:
        for cluster in (primary, standby):
            cluster.kill()
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()
