#!/usr/bin/env python3
"""Test mcec-lab watch with real Redis servers: compare every event with the databases.

  tests/watch_test.py MCEC-LAB
"""
import concurrent.futures
import json
import os
import pathlib
import queue
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import traceback

from common import (PATIENCE, RedisServer, commands_for, format_dump, parse_fields, replace_file, start, started,
                    within)

LAB = sys.argv[1]
PERMISSIONS = "~* &* -@all +ping +dbsize +select +scan +hgetall +psubscribe +config|get"  # see docs/watch.md
EDGE, GUARD = "edge_port", "root_guard"
ROWS = {
    "DEVICE_METADATA|localhost": {"mac": "02:00:00:00:00:01", "hostname": "leaf"},
    "STP|GLOBAL": {"mode": "mst"},
    "STP_MST|GLOBAL": {"name": "campus", "revision": "3"},
    "STP_MST_INST|MST_INSTANCE|1": {"vlan_list@": "10,20-29"},
    "VLAN|Vlan10": {"vlanid": "10"},
    "VLAN_MEMBER|Vlan10|PortChannel10": {"tagging_mode": "tagged"},
    "STP_PORT|PortChannel10": {EDGE: "false", GUARD: "true"},
    "MCLAG_DOMAIN|1": {"peer_link": "PortChannel1"},
    "MCLAG_INTERFACE|1|PortChannel10": {"NULL": "NULL"},
    "PORT|Ethernet0": {"speed": "100000"},
}


def switch(folder, *options):
    return RedisServer(folder, *options, rows=ROWS)


def read_row(server, name):
    words, = server.do(["HGETALL", name])
    return parse_fields(dict(zip(words[::2], words[1::2]))) if words else None


def run(*arguments, **variables):
    return subprocess.run([LAB, *arguments], capture_output=True, text=True, timeout=PATIENCE,
                          env={**os.environ, **variables})


class Watch:
    """A running watch, whose events are compared with the output of compare."""

    def __init__(self, left, right, *options, **variables):
        self.sources = {"left": left, "right": right}
        self.urls = [getattr(source, "url", source) for source in (left, right)]
        self.variables = variables
        self.process = start([LAB, "watch", "--json", *options, *self.urls], text=True, stdout=subprocess.PIPE,
                             env={**os.environ, **variables})
        self.events = queue.Queue()
        self.checks = {}
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            self.events.put(json.loads(line))
        self.events.put({"event": "end"})

    def next(self, kind, agree="?", is_stable=True, **expected):
        """Return the next event, which must be of this kind. If no row changes meanwhile (is_stable), check it."""
        event = self.events.get(timeout=PATIENCE)
        while event["event"] == "note" != kind:
            event = self.events.get(timeout=PATIENCE)
        assert event["event"] == kind, f"expected {kind}, found {event}"
        assert re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d+)?[+-]\d\d:\d\d", event["time"]), event["time"]
        assert agree in ("?", event["agree"]), event
        for key, value in expected.items():
            assert event[key] == value, event
        reported = event.get("comparison") or event
        if event["agree"] is not None:
            if "comparison" in event:
                self.checks.clear()
            self.checks.update((check["scope"], check) for check in reported["checks"])
            for scope in event.get("gone", []):
                del self.checks[scope]
        if is_stable:
            self.compare(event)
        return event

    def compare(self, event):
        if event["agree"] is not None:
            output = json.loads(run("compare", "--json", *self.urls, **self.variables).stdout)
            assert event["agree"] == output["agree"], event
            assert self.checks == {check["scope"]: check for check in output["checks"]}, event
            assert event.get("comparison", output) == output, event
        for row in event.get("rows", []):
            stored = read_row(self.sources[row["side"]], row["row"])
            assert (row["after"] is None) == (stored is None), row
            assert (row["after"] or {}).items() <= (stored or {}).items(), (row, stored)

    def changed(self, agree, *rows, scopes=None, kind="changed"):
        event = self.next(kind, agree)
        assert [f"{row['side']} {row['row']}" for row in event["rows"]] == list(rows), event
        if scopes is not None:
            assert [check["scope"] for check in event["checks"]] == scopes, event
        return event

    def end(self):
        left = [event for event in list(self.events.queue) if event["event"] != "note"]
        assert not left, left
        self.process.send_signal(signal.SIGINT)
        assert self.process.wait(PATIENCE) == 0, self.process.returncode


def watch_agreeing(folder, *options):
    watch = Watch(switch(folder), switch(folder), *options)
    watch.next("compared", True)
    return watch, *watch.sources.values()


PORT, VLAN, MODE = "STP_PORT|PortChannel10", "VLAN|Vlan30", "STP|GLOBAL"
SWITCH, CHANNEL, BOTH = ["switch"], ["PortChannel10"], ["switch", "PortChannel10"]
REGION, INSTANCE = "STP_MST|GLOBAL", "STP_MST_INST|MST_INSTANCE|1"
BURST = [f"VLAN|Vlan{v}" for v in range(100, 108)]
CHANGES = [  # side, commands, verdict, rows, scopes
    ("right", [["HSET", PORT, GUARD, "false"]], False, [PORT], CHANNEL),
    ("right", [["HSET", PORT, GUARD, "true"]], True, [PORT], CHANNEL),
    ("right", [["DEL", PORT]], False, [PORT], CHANNEL),
    ("right", [["HSET", "other", EDGE, "false", GUARD, "true"], ["RENAME", "other", PORT]], True, [PORT], CHANNEL),
    ("left", [["HSET", REGION, "name", "Z\u00fcrich"]], False, [REGION], SWITCH),
    ("left", [["HSET", REGION, "name", "campus"]], True, [REGION], SWITCH),
    ("right", [["HSET", INSTANCE, "vlan_list@", "10"]], False, [INSTANCE], SWITCH),
    ("right", [["HSET", INSTANCE, "vlan_list@", "20-29,10"]], True, [INSTANCE], SWITCH),
], [
    ("right", [["HSET", PORT, "bpdu_guard", "true"]], True, [PORT], []),
    ("left", [["HSET", MODE, "mode", "none"]], False, [MODE], []),
    ("left", [["HSET", MODE, "mode", "mst"]], True, [MODE], BOTH),
    # Changes of ignored rows and fields: no event.
    ("right", [["HSET", "PORT|Ethernet0", "speed", "1"], ["HSET", "VLAN|Vlan10", "note", "x"]], None, [], []),
    ("right", [["MULTI"], *(["HSET", row, "vlanid", row[9:]] for row in BURST), ["EXEC"]], True, BURST, []),
    ("right", [["HSET", PORT, GUARD, "false"], ["PEXPIRE", PORT, "1500"]], False, [PORT], CHANNEL),
    ("right", [], False, [PORT], CHANNEL),  # the row has expired; edge_port still differs
    ("right", commands_for({PORT: ROWS[PORT]}), True, [PORT], CHANNEL),
]
# Invalid rows, and their corrections.
ERRORS = [(["HSET", PORT, GUARD, "yes"], ["HSET", PORT, GUARD, "true"]),
          (["HSET", "VLAN|Vlan5000", "a", "b"], ["DEL", "VLAN|Vlan5000"]),
          (["SET", VLAN, "x"], ["DEL", VLAN])]


def test_changes(folder, rows):
    watch, *_ = watch_agreeing(folder)
    for side, commands, agree, names, scopes in rows:
        watch.sources[side].do(*commands)
        if names:
            watch.changed(agree, *(f"{side} {name}" for name in names), scopes=scopes)
    watch.end()


def test_access_and_metrics(folder):
    left = switch(folder, "--user", "watcher", "on", ">s3cret", *PERMISSIONS.split(), "--user", "default",
                  "on", "nopass", "~*", "&*", "+@all")
    right = switch(folder)
    left.url = left.url.replace("//", "//watcher@")
    metrics = pathlib.Path(folder, "pair.prom")
    watch = Watch(left, right, "--metrics", str(metrics), MCEC_LEFT_PASSWORD="s3cret")
    label = f'{{pair="{left.url} {right.url}"'

    def check_metrics(*lines):
        within(lambda: [line for line in lines if line not in metrics.read_text()])

    watch.next("compared", True, notifications={"left": True, "right": True})
    check_metrics(f"mcec_pair_agrees{label}}} 1\n", f'{label},side="right"}} 1\n')
    right.do(["HSET", PORT, GUARD, "false"])
    watch.changed(False, f"right {PORT}")
    check_metrics(f"mcec_pair_agrees{label}}} 0\n", f'differing{label},parameter="ifi-port-guard"}} 1\n')
    right.do(["HSET", PORT, GUARD, "true"])
    watch.changed(True, f"right {PORT}")
    for invalid, correction in ERRORS:
        right.do(invalid)
        event = watch.next("error", None, side="right", is_stable=False)
        error, = event["errors"]
        assert error["source"] == right.url and error["where"].startswith(invalid[1]), event
        assert [row["row"] for row in event["rows"]] == [invalid[1]], event
        check_metrics(f"mcec_pair_agrees{label}}} NaN\n")
        right.do(correction)
        watch.changed(True, f"right {invalid[1]}", scopes=[])
    watch.end()
    check_metrics(f"mcec_pair_agrees{label}}} NaN\n")
    assert not [name for name in os.listdir(folder) if name.startswith("pair.prom.")]
    refused, = left.do(["ACL", "LOG"])
    assert not refused, refused


def test_endless_burst(folder):
    """The burst is reported in several events; the last one has the last change."""
    watch, _, right = watch_agreeing(folder)
    ends, changes = time.monotonic() + PATIENCE, 0
    while watch.events.qsize() < 2:
        assert time.monotonic() < ends, "nothing was reported while rows changed"
        changes += 1
        right.do(["HSET", PORT, GUARD, "true" if changes % 2 else "false", EDGE, "true" if changes % 3 else "false"])
        time.sleep(0.02)
    right.do(*commands_for({PORT: ROWS[PORT], VLAN: {"vlanid": "30"}}))
    reported = []
    while not reported or VLAN not in [row["row"] for row in reported[-1]["rows"]]:
        reported.append(watch.next("changed", is_stable=False))
    watch.compare(reported[-1])
    right.do(["DEL", VLAN])
    watch.changed(True, f"right {VLAN}", scopes=[])
    watch.end()


def test_silent_changes(folder):
    """Flushing and swapping databases cause no notifications of rows."""
    watch, left, right = watch_agreeing(folder)
    left.do(["FLUSHDB"])
    right.do(*commands_for(ROWS), ["HSET", PORT, GUARD, "false"], ["DEL", "VLAN|Vlan10"], database=7)
    right.do(["SWAPDB", "4", "7"])
    events = [watch.events.get(timeout=PATIENCE) for _ in range(2)]
    error, = (event for event in events if event["event"] == "error")
    changed, = (event for event in events if event["event"] == "changed")
    assert error["agree"] is None and error["side"] == "left", error
    assert [row["row"] for row in changed["rows"]] == [PORT, "VLAN|Vlan10"], changed
    left.do(*commands_for(ROWS))
    watch.next("changed", False)
    watch.end()


LOSSES = [  # how the server disconnects and returns, the reason in the event
    (RedisServer.stop, RedisServer.start, "closed"),
    (lambda server: server.process.send_signal(signal.SIGSTOP),
     lambda server: server.process.send_signal(signal.SIGCONT), "no complete answer"),
    (lambda server: server.do(["CONFIG", "SET", "requirepass", "s3cret"],
                              ["CLIENT", "KILL", "SKIPME", "yes", "TYPE", "normal"]),
     lambda server: server.do(["CONFIG", "SET", "requirepass", ""], password="s3cret"), ""),
]


def test_loss(folder, stop, resume, reason):
    watch, left, right = watch_agreeing(folder, "--read-timeout", "4")
    stop(right)
    lost = watch.next("disconnected", None, side="right")
    assert reason in lost["reason"], lost
    for guard in ["false", "true"]:  # the change is reported, the verdict is unknown
        left.do(["HSET", PORT, GUARD, guard])
        watch.changed(None, f"left {PORT}", scopes=[])
    resume(right)
    watch.next("connected", side="right")
    left.do(["HSET", PORT, GUARD, "false"])
    watch.changed(False, f"left {PORT}", scopes=["PortChannel10"])
    watch.end()


def test_starts(folder):
    left, right = switch(folder), switch(folder)
    right.do(["CONFIG", "SET", "requirepass", "s3cret"])
    closed = f"unix://{folder}/closed.sock"
    protected = right.url.replace("//", "//:s3cret@")
    wrong = right.url.replace("//", "//:wr0ng@")
    invalid = pathlib.Path(folder, "invalid.json")
    invalid.write_text('{"VLAN": {"Vlan5000": {}}}')

    def check(options, sources, variables, status, text):
        ended = run("watch", "--json", *options, *sources, **variables)
        output = ended.stdout + ended.stderr
        assert ended.returncode == status and text in output, (options, sources, ended)
        assert "s3cret" not in output and "wr0ng" not in output and "s3/cret" not in output, output

    rows = [
        (["--once-agreed"], [left.url, protected], {}, 0, "compared"),
        (["--once-agreed"], [left.url, right.url], {"MCEC_RIGHT_PASSWORD": "s3cret"}, 0, "compared"),
        (["--once-agreed"], [left.url, protected], {"MCEC_RIGHT_PASSWORD": "wr0ng"}, 0, "compared"),
        ([], [left.url, wrong], {"MCEC_RIGHT_PASSWORD": "s3cret"}, 2, "the password is refused"),
        ([], [left.url, right.url], {}, 2, "requires a password"),
        ([], [left.url, right.url], {"MCEC_LEFT_PASSWORD": "s3cret"}, 2, "the password is refused"),
        ([], [left.url, f"{folder}/missing.json"], {}, 2, "No such file"),
        ([], [left.url, str(invalid)], {}, 2, "Vlan5000"),
        ([], [left.url, left.url + "?db=9"], {}, 2, '"errors"'),
        ([], [left.url, "redis://:s3cret@host:port"], {}, 2, "port"),
        ([], [left.url, "redis://:s3/cret@host"], {}, 2, "%2F"),
        (["--timeout", "1", "--once-agreed"], [left.url, closed], {}, 1, '"disconnected"'),
        (["--timeout", "1"], ["redis://localhost:1", "redis://no.such.host.invalid"], {}, 1, '"disconnected"'),
        (["--timeout", "1", "--metrics", folder], [left.url, left.url], {}, 2, "found"),
    ]
    with concurrent.futures.ThreadPoolExecutor() as pool:
        list(pool.map(lambda row: check(*row), rows))


def test_late_without_notifications(folder):
    """The right server starts late, and is polled."""
    late = switch(folder, "--notify-keyspace-events", "")
    late.stop()
    os.remove(late.path)
    watch = Watch(switch(folder), late, "--interval", "0.2")
    watch.next("disconnected", None, side="right")
    late.start()
    watch.next("connected", True, notifications={"left": True, "right": False})
    late.do(["HSET", PORT, GUARD, "false"])
    watch.changed(False, f"right {PORT}", scopes=["PortChannel10"])
    watch.end()


def test_files(folder):
    """A dump that is truncated, missing and restored; text output for a terminal with ASCII only."""
    left = switch(folder)
    path = pathlib.Path(folder, "right.json")

    def dump(guard):
        return format_dump({**ROWS, PORT: {GUARD: guard}})

    def replace(text):
        replace_file(path, text)

    replace(dump("true"))
    watch = start([LAB, "watch", "--interval", "0.2", left.url, str(path)], text=True, stdout=subprocess.PIPE,
                  env={**os.environ, "LC_ALL": "C"})
    for write, line in [
        (lambda: None, "the pair agrees"),
        (lambda: replace(dump("false")), f"right {PORT} root_guard true->false: PortChannel10 no longer agrees "
         "(ifi-port-guard); the pair does not agree"),
        (lambda: replace(dump("true")[:99]), r"right .*: the dump is cut off"),
        (lambda: None, "right: the verdict is unknown"),
        (lambda: replace(dump("true")), r"right STP_PORT.* false->true: PortChannel10 now agrees; the pair agrees"),
        (path.unlink, "right is disconnected: No such file or directory"),
        (lambda: replace(dump("false")), r"right is connected: the pair does not agree: PortChannel10 \(ifi-port-guard\)"),
    ]:
        write()
        output = watch.stdout.readline()
        assert re.match(r"\d\d:\d\d:\d\d " + (line if "\\" in line or ".*" in line else re.escape(line)), output), (output, line)
    watch.terminate()
    assert watch.wait(PATIENCE) == 0


def test_reader_goes_away(folder):
    """The watch ends without an event. A socket that only refuses to send, as that of the journal, does not end it."""
    right = switch(folder)
    reader, writer = socket.socketpair()
    writer.shutdown(socket.SHUT_RD)
    reader.settimeout(PATIENCE)
    watch = start([LAB, "watch", right.url, right.url], stdout=writer)
    writer.close()
    assert reader.recv(1)
    right.do(["HSET", PORT, "bpdu_guard", "true"])
    within(lambda: b"bpdu_guard" not in reader.recv(1 << 16))
    reader.close()
    assert watch.wait(PATIENCE) == 0


signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
tests = [(test_access_and_metrics,), (test_endless_burst,), (test_silent_changes,), (test_starts,),
         (test_late_without_notifications,), (test_files,), (test_reader_goes_away,),
         *((test_changes, rows) for rows in CHANGES), *((test_loss, *row) for row in LOSSES)]
failures = 0
with tempfile.TemporaryDirectory() as temporary, concurrent.futures.ThreadPoolExecutor(len(tests)) as pool:
    try:
        running = {pool.submit(test, temporary, *arguments): test.__name__ for test, *arguments in tests}
        for ended in concurrent.futures.as_completed(running):
            if ended.exception():
                failures += 1
                print(f"{running[ended]} failed", file=sys.stderr)
                traceback.print_exception(ended.exception())
    finally:
        for process in started:
            process.kill()
            process.wait()
sys.exit(1 if failures else 0)
