#!/usr/bin/env python3
"""mcec-lab watch with many pairs and real redis-servers: what its events add up to is what compare reports.

  tests/fleet_test.py MCEC-LAB

Two servers have a database for each pair. Some left sides are files, one server never answers, one has
no name. The servers and the watch end with the test. scripts/soak runs the same for longer.
"""
import json
import os
import pathlib
import random
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import urllib.request

PATIENCE = 60  # seconds until an event is missed; a loaded machine is slow
PASSWORD = "s3cret"
CHANNELS, VLANS = range(1, 21), range(10, 30)
VALUES = {  # of a row and a field: first the usual one; "yes" is an error
    **{(f"STP_PORT|PortChannel{channel}", "root_guard"): ["true", "false", "yes"] for channel in CHANNELS},
    ("STP_MST|GLOBAL", "name"): ["campus", "another"],
    ("STP_MST_INST|MST_INSTANCE|1", "vlan_list@"): ["10-29", "10-28"],
}
ROWS = {
    "DEVICE_METADATA|localhost": {"mac": "02:00:00:00:00:01", "hostname": "leaf"},
    "STP|GLOBAL": {"mode": "mst"}, "STP_MST|GLOBAL": {"revision": "3"},
    "MCLAG_DOMAIN|1": {"peer_link": "PortChannel99"},
    **{f"VLAN|Vlan{vlan}": {"vlanid": str(vlan)} for vlan in VLANS},
    **{f"VLAN_MEMBER|Vlan{VLANS[i % len(VLANS)]}|PortChannel{channel}": {"tagging_mode": "tagged"}
       for channel in CHANNELS for i in (channel, channel + 1)},
    **{f"MCLAG_INTERFACE|1|PortChannel{channel}": {"NULL": "NULL"} for channel in CHANNELS},
}
for (row, field), values in VALUES.items():
    ROWS.setdefault(row, {})[field] = values[0]
SPARE = 3  # databases of each server that no pair of the fleet has


def within(find_problems, seconds=PATIENCE):
    """Wait until no problem is found."""
    ends = time.monotonic() + seconds
    while problems := find_problems():
        assert time.monotonic() < ends, f"after {seconds} s: {str(problems)[:2000]}"
        time.sleep(0.02)


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as listener:
        return listener.getsockname()[1]


class Server:
    """A redis-server on a TCP port, or on a Unix socket with a password."""

    def __init__(self, folder, databases, port):
        self.port, self.path, self.connections = port, f"{folder}/redis.sock", 0
        where = ["--port", str(port)] if port else ["--port", "0", "--unixsocket", self.path, "--requirepass", PASSWORD]
        self.command = ["setpriv", "--pdeathsig", "KILL", "redis-server", *where, "--databases", str(databases), "--save", "",
                        "--dir", folder, "--dbfilename", f"{port}.rdb", "--notify-keyspace-events", "KEA"]
        self.start()

    def url(self, database, login=""):
        return f"redis://127.0.0.1:{self.port}/{database}" if self.port else f"unix://{login}{self.path}?db={database}"

    def start(self):
        self.process = subprocess.Popen(self.command, stdout=subprocess.DEVNULL)
        within(lambda: not self.can_answer())

    def stop(self):
        self.do(0, ["SAVE"])
        self.process.kill()
        self.process.wait()

    def can_answer(self):
        try:
            return b"PONG" in self.do(0, ["PING"])
        except OSError:
            return False

    def do(self, database, *commands):
        commands = [*([] if self.port else [["AUTH", PASSWORD]]), ["SELECT", str(database)], *commands]
        with socket.socket(socket.AF_INET if self.port else socket.AF_UNIX) as connection:
            connection.settimeout(PATIENCE)
            connection.connect(("127.0.0.1", self.port) if self.port else self.path)
            self.connections += 1
            connection.sendall("".join(f"*{len(words)}\r\n" + "".join(f"${len(word)}\r\n{word}\r\n" for word in words)
                                       for words in commands).encode())
            answers = b""
            while answers.count(b"\r\n") < len(commands) and (got := connection.recv(1 << 16)):
                answers += got
        assert b"-ERR" not in answers, answers
        return answers

    def count_connections(self):
        """Those of others."""
        return int(re.search(rb"total_connections_received:(\d+)", self.do(0, ["INFO", "stats"]))[1]) - self.connections


class Fleet:
    """Pairs, what is set on their sides, and a watch of them."""

    def __init__(self, lab, folder, count, *options):
        self.lab, self.folder, self.count = lab, pathlib.Path(folder), count
        self.servers = [Server(folder, count + SPARE, free_port()), Server(folder, count + SPARE, None)]
        self.hostile = socket.create_server(("127.0.0.1", 0), backlog=1000)  # nobody answers
        self.names = [f"pair-{i:03}" for i in range(count)]
        self.unusual = {name: ({}, {}) for name in self.names}  # what is not usual, of each side
        self.possible = {name: {None, True} for name in self.names}  # verdicts since all was quiet
        self.verdicts, self.checks, self.events, self.failures = {}, {}, [], []
        rows = [["HSET", row, *(w for field in fields.items() for w in field)] for row, fields in ROWS.items()]
        for i in range(count + SPARE):
            for server in self.servers:
                server.do(i, *rows)
        for i in filter(self.has_file, range(count)):
            self.write_file(i)
        self.write_pairs()
        self.metrics, self.port = self.folder / "fleet.prom", free_port()
        self.process = subprocess.Popen(
            ["setpriv", "--pdeathsig", "TERM", lab, "watch", "--json", "--pairs", self.folder / "pairs", "--metrics", self.metrics,
             "--listen", f"127.0.0.1:{self.port}", "--credentials", self.folder / "credentials", *options],
            stdout=subprocess.PIPE, text=True, start_new_session=True)
        threading.Thread(target=self.read, daemon=True).start()

    def has_file(self, i):
        return i % 12 == 5

    def write_file(self, i):
        tables = {}
        for row, fields in ROWS.items():
            table, _, key = row.partition("|")
            fields = {field: self.unusual[self.names[i]][0].get((row, field), value) for field, value in fields.items()}
            tables.setdefault(table, {})[key] = {f.rstrip("@"): v for f, v in fields.items() if f != "NULL"}
        path = self.folder / f"left-{i}.json"
        path.with_suffix(".new").write_text(json.dumps(tables))
        path.with_suffix(".new").rename(path)

    def write_pairs(self):
        """For the watch, and for compare, which has no credentials."""
        def pairs(login):
            return [[name, f"left-{i}.json" if self.has_file(i) else self.servers[0].url(i), self.servers[1].url(i, login)]
                    for i, name in enumerate(self.names)]
        silent = [["hostile", "redis://127.0.0.1:%d" % self.hostile.getsockname()[1], self.servers[1].url(0)],
                  ["nowhere", "redis://no.such.host.invalid", self.servers[1].url(0)]]
        middle = self.count // 2
        for name, lines in [("pairs", pairs("")[:middle] + silent + pairs("")[middle:]), ("compared", pairs(f":{PASSWORD}@")),
                            ("credentials", [[f"unix://{self.servers[1].path}", "", PASSWORD]])]:
            (self.folder / name).write_text("".join("\t".join(line) + "\n" for line in lines))
            (self.folder / name).chmod(0o600)

    def read(self):
        for line in self.process.stdout:
            try:
                self.take({**json.loads(line), "arrived": time.monotonic()})
            except Exception as failure:  # what is wrong with an event fails the test
                self.failures.append(f"{failure!r}: {line[:500]}")

    def take(self, event):
        self.events.append(event)
        if event["event"] == "summary":
            return
        name, agree = event["pair"], event["agree"]
        assert agree in self.possible.get(name, {None}), f"only {self.possible.get(name)} are possible"
        if agree is not None:
            checks = {} if "comparison" in event else dict(self.checks[name])
            checks.update((check["scope"], check) for check in event.get("comparison", event).get("checks", []))
            for scope in event.get("gone", []) if event["event"] == "changed" else []:
                del checks[scope]
            self.checks[name] = checks
        self.verdicts[name] = agree

    def expected(self, name):
        left, right = self.unusual[name]
        return None if "yes" in [*left.values(), *right.values()] else left == right

    def set(self, i, side, key, value):
        name = self.names[i]
        unusual = self.unusual[name][side]
        unusual.pop(key, None) if value == VALUES[key][0] else unusual.update({key: value})
        self.possible[name].add(self.expected(name))
        self.write_file(i) if side == 0 and self.has_file(i) else self.servers[side].do(i, ["HSET", *key, value])

    def change(self, i):
        """What is unusual becomes usual again, or one of all values unusual."""
        for side, unusual in enumerate(self.unusual[self.names[i]]):
            for key in list(unusual):
                return self.set(i, side, key, VALUES[key][0])
        key = random.choice(list(VALUES))
        self.set(i, random.randrange(2), key, random.choice(VALUES[key][1:]))

    def restart(self, side):
        for possible in self.possible.values():
            possible.add(None)
        self.servers[side].stop()
        within(lambda: [name for i, name in enumerate(self.names)
                        if self.verdicts[name] is not None and not (side == 0 and self.has_file(i))])
        self.servers[side].start()

    def kill_worker(self):
        workers = subprocess.run(["pgrep", "-P", str(self.process.pid)], capture_output=True, text=True).stdout.split()
        os.kill(int(random.choice(workers)), signal.SIGKILL)

    def wrong_verdicts(self):
        assert not self.failures, self.failures[:3]
        assert self.process.poll() is None, f"the watch has ended with {self.process.returncode}"
        return [(name, self.verdicts.get(name, "no event"), self.expected(name)) for name in self.names
                if self.verdicts.get(name, "no event") != self.expected(name)]

    def settle(self, seconds=PATIENCE):
        within(self.wrong_verdicts, seconds)

    def compare(self):
        """Now that nothing changes, compare and the metrics say of each pair what its events add up to."""
        self.settle()
        output = subprocess.run([self.lab, "compare", "--json", "--pairs", self.folder / "compared"], capture_output=True,
                                text=True, timeout=10 * PATIENCE).stdout
        compared = {line["pair"]: line for line in map(json.loads, output.splitlines())}
        assert {name: line.get("agree") for name, line in compared.items()} == {n: self.expected(n) for n in self.names}, output[:500]
        within(lambda: self.differing(compared))
        for name in self.names:
            self.possible[name] = {self.expected(name)}
        self.settle()

    def differing(self, compared):
        served = urllib.request.urlopen(f"http://127.0.0.1:{self.port}/metrics").read().decode()
        known = [(name, line, f'mcec_pair_agrees{{pair="{name}"}} {int(line["agree"])}\n') for name, line in compared.items() if "agree" in line]
        return [(name, gauge) for name, line, gauge in known
                if self.checks[name] != {check["scope"]: check for check in line["checks"]}
                or gauge not in served or gauge not in self.metrics.read_text()]

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        assert self.process.wait(PATIENCE) == 0, self.process.returncode
        for server in self.servers:
            server.process.kill()
            server.process.wait()


def check_signals(fleet):
    """SIGUSR1 has a summary written, SIGHUP the pairs read again; unchanged ones keep their connections."""
    fleet.process.send_signal(signal.SIGUSR1)
    within(lambda: "summary" not in [event["event"] for event in fleet.events])
    [counts] = [event["counts"] for event in fleet.events if event["event"] == "summary"]
    assert counts["agree"] == [*map(fleet.expected, fleet.names)].count(True), counts
    before = [server.count_connections() for server in fleet.servers]
    fleet.names[0] = "renamed"
    fleet.unusual["renamed"], fleet.possible["renamed"] = fleet.unusual["pair-000"], {None, fleet.expected("pair-000")}
    fleet.write_pairs()
    fleet.process.send_signal(signal.SIGHUP)
    fleet.settle()
    for server, connections in zip(fleet.servers, before):
        assert server.count_connections() - connections <= 4, "pairs that did not change were connected again"


def watch_list(fleet, pairs, *options):
    """Another watch, of pairs (name, left, right); returns its process, and its events as pairs (name, agree)."""
    path = fleet.folder / "list"
    path.write_text("".join("\t".join(pair) + "\n" for pair in pairs))
    process = subprocess.Popen(["timeout", str(PATIENCE), fleet.lab, "watch", "--json", "--pairs", path, *options],
                               stdout=subprocess.PIPE, text=True)
    return process, ((event["pair"], event["agree"]) for event in map(json.loads, process.stdout))


def check_hung_sources(fleet):
    """More of them than are read at once, with all the time that they want, delay no other pair."""
    hung = f"redis://127.0.0.1:{fleet.hostile.getsockname()[1]}"
    server, spare = fleet.servers[0], fleet.count
    pairs = [[f"hung-{i}", f"{hung}/{2 * i}", f"{hung}/{2 * i + 1}"] for i in range(150)]
    process, events = watch_list(fleet, [*pairs, ["last", server.url(spare), server.url(spare + 1)]], "--read-timeout", "3600")
    assert next(events, None) == ("last", True), "the last pair waited for those before it"
    process.kill()


def check_once_agreed(fleet):
    """A watch for agreement goes on while a change is not compared yet."""
    server, (left, right, late) = fleet.servers[0], range(fleet.count, fleet.count + SPARE)

    def set_name(database, name):
        server.do(database, ["HSET", "STP_MST|GLOBAL", "name", name])

    set_name(late, "another")
    process, events = watch_list(fleet, [["first", server.url(left), server.url(right)],
                                         ["second", server.url(left), server.url(late)]], "--once-agreed")
    assert {next(events), next(events)} == {("first", True), ("second", False)}
    for i in range(8):  # the first pair changes until after the second is compared
        set_name(right, f"another-{i}")
        if i == 0:
            set_name(late, "campus")
        time.sleep(0.04)
    assert ("first", False) in events, "the watch ended before the change was compared"
    set_name(right, "campus")
    assert ("first", True) in events and process.wait(PATIENCE) == 0


def main():
    with tempfile.TemporaryDirectory() as folder:
        ran, program = pathlib.Path(folder, "ran"), pathlib.Path(folder, "program")
        program.write_text(f'#!/bin/sh\nexec cat >>"{ran}"\n')
        program.chmod(0o700)
        fleet = Fleet(sys.argv[1], folder, 14, "--on-change", program)
        fleet.settle()
        for i in range(fleet.count):
            fleet.change(i)
        fleet.kill_worker()
        fleet.compare()
        check_signals(fleet)
        fleet.restart(1)
        for i in range(0, fleet.count, 2):
            fleet.change(i)
        fleet.compare()

        def last_run():
            return {event.get("pair"): event["agree"] for event in map(json.loads, ran.read_text().splitlines())}
        check_hung_sources(fleet)
        check_once_agreed(fleet)
        within(lambda: [name for name in fleet.names if last_run().get(name, "none") != fleet.expected(name)])
        fleet.end()


if __name__ == "__main__":
    main()
