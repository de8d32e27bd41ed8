#!/usr/bin/env python3
"""Test mcec-lab with servers that send invalid data: it ends with a message, in time, and in little memory.

  tests/server_test.py MCEC-LAB
"""
import concurrent.futures
import itertools
import os
import pathlib
import resource
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

from common import is_instrumented

LAB = sys.argv[1]
MAXIMUM_BYTES = 200 << 20
IS_INSTRUMENTED = is_instrumented(LAB)


def bulk(text):
    return b"$%d\r\n%s\r\n" % (len(text), text)


def array(*items):
    return b"*%d\r\n" % len(items) + b"".join(items)


def texts(*items):
    return array(*map(bulk, items))


def scan(*keys, cursor=b"0"):
    return array(bulk(cursor), texts(*keys))


ROWS = {b"STP|GLOBAL": (b"mode", b"mst"), b"STP_MST|GLOBAL": (b"name", b"campus"),
        b"MCLAG_DOMAIN|1": (b"peer_link", b"PortChannel1"),
        b"MCLAG_INTERFACE|1|PortChannel2": (b"NULL", b"NULL")}
ANSWERS = {
    b"DBSIZE": b":1\r\n", b"AUTH": b"+OK\r\n", b"SELECT": b"+OK\r\n", b"PING": b"+PONG\r\n",
    b"PSUBSCRIBE": lambda words: array(bulk(b"psubscribe"), bulk(words[1]), b":1\r\n"),
    b"CONFIG": texts(b"notify-keyspace-events", b"KEA"),
    b"SCAN": scan(*ROWS), b"HGETALL": lambda words: texts(*ROWS.get(words[1], (b"NULL", b"NULL"))),
}


def drip(data, seconds):
    for byte in data:
        yield bytes([byte])
        time.sleep(seconds)


def forever(data, first=b""):
    return lambda words: itertools.chain([first], itertools.repeat(data))


def numbered(rows_at_once, name, count=10 ** 9):
    """Answers of SCAN that always have new keys."""
    def answer(words):
        first = int(words[1])
        keys = [name % number for number in range(first, min(first + rows_at_once, count))]
        return scan(*ROWS, *keys, cursor=b"%d" % (first + rows_at_once if first + rows_at_once < count else 0))
    return answer


def notifications(thousands):
    """Answers of PSUBSCRIBE; after the last one, notifications for changes of these thousands of rows."""
    def answer(words):
        yield ANSWERS[b"PSUBSCRIBE"](words)
        if b"VLAN_MEMBER|" in words[1]:
            for thousand in range(thousands):
                yield b"".join(texts(b"pmessage", b"p", b"__keyspace@4__:VLAN|%050d%03d" % (thousand, row), b"hset")
                               for row in range(1000))
    return answer


class MockServer:
    """Answers requests from a table of commands; or sends a greeting, whatever is requested."""

    def __init__(self, answers, greeting=None):
        self.answers, self.greeting, self.requests = {**ANSWERS, **answers}, greeting, []
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.url = "redis://127.0.0.1:%d" % self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            threading.Thread(target=self.serve, args=self.listener.accept()[:1], daemon=True).start()

    def serve(self, connection):
        try:
            stream = connection.makefile("rb")
            while self.greeting is None and (line := stream.readline()):
                words = []
                for _ in range(int(line[1:])):
                    words.append(stream.read(int(stream.readline()[1:])))
                    stream.readline()
                self.requests.append(words)
                answer = self.answers[words[0]]
                answer = answer(words) if callable(answer) else answer
                for piece in [answer] if isinstance(answer, bytes) else answer:
                    connection.sendall(piece)
            if self.greeting is not None:
                stream.readline()
                connection.sendall(self.greeting)
        except OSError:
            pass
        connection.close()


def limit_memory():
    if not IS_INSTRUMENTED:
        resource.setrlimit(resource.RLIMIT_DATA, (MAXIMUM_BYTES, MAXIMUM_BYTES))


def run(*words, **variables):
    """Return the exit status, the output and the run time of a command."""
    began = time.monotonic()
    ended = subprocess.run([LAB, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                           timeout=60, text=True, preexec_fn=limit_memory, env={**os.environ, **variables})
    return ended.returncode, ended.stdout, time.monotonic() - began


PROTOCOL, CHANNEL = "protocol error: ", b"MCLAG_INTERFACE|1|PortChannel%d"
VLAN_LIST = b"STP_MST_INST|MST_INSTANCE|%d"
COMPARED = [  # name, answers that differ from ANSWERS, greeting, expected status and text
    ("many channels", {b"SCAN": numbered(1000, CHANNEL, 4000)}, None, 0, "agree"),
    ("many faults", {b"SCAN": numbered(5000, b"VLAN_MEMBER|VlanX%d", 20000)}, None, 2, "VlanX"),
    ("usual", {}, None, 0, "agree"),
    ("slow answer", {b"SELECT": lambda _: drip(b"+" + b"x" * 99, 0.1)}, None, 2, "no complete answer within"),
    ("slow reading", {b"SCAN": lambda _: (time.sleep(0.2), scan(cursor=b"7"))[1]}, None, 2, "not read within"),
    ("slow subscription", {b"PSUBSCRIBE": lambda words: (time.sleep(0.3), ANSWERS[b"PSUBSCRIBE"](words))[1]}, None, 2, "not read within"),
    ("endless scan", {b"SCAN": scan(cursor=b"7")}, None, 2, "SCAN"),
    ("no cursor", {b"SCAN": array(b"$-1\r\n", texts())}, None, 2, PROTOCOL),
    ("cursor that is not a number", {b"SCAN": scan(cursor=b"x")}, None, 2, PROTOCOL),
    ("keys that are not strings", {b"SCAN": array(bulk(b"0"), array(bulk(b"STP|GLOBAL"), texts()))}, None, 2, PROTOCOL),
    ("nil key", {b"SCAN": array(bulk(b"0"), array(bulk(b"STP|GLOBAL"), b"$-1\r\n"))}, None, 2, PROTOCOL),
    ("odd row", {b"HGETALL": texts(b"mode", b"mst", b"name")}, None, 2, PROTOCOL),
    ("nested row", {b"HGETALL": array(texts(b"mode"), bulk(b"mst"))}, None, 2, PROTOCOL),
    ("nil value", {b"HGETALL": array(bulk(b"mode"), b"$-1\r\n")}, None, 2, PROTOCOL),
    ("number for a string", {b"HGETALL": array(bulk(b"mode"), b":1\r\n")}, None, 2, PROTOCOL),
    ("string for a row", {b"HGETALL": bulk(b"mode")}, None, 2, PROTOCOL),
    ("deep answer", {b"SCAN": b"*1\r\n" * 100}, None, 2, PROTOCOL),
    ("many elements", {b"SCAN": b"*100000000\r\n"}, None, 2, "elements"),
    ("many nested elements", {b"SCAN": forever(b"*90000\r\n" + b":1\r\n" * 89999, b"*90000\r\n")}, None, 2, "elements"),
    ("endless bulk", {b"SCAN": forever(b"x" * 65536, b"$2000000000\r\n")}, None, 2, "an answer of more than"),
    ("endless error", {b"SCAN": forever(b"x" * 65536, b"-ERR ")}, None, 2, "a line of more than"),
    ("long error", {b"SCAN": b"-ERR " + b"x" * 60000 + b"\r\n"}, None, 2, "ERR xxx"),
    ("new keys", {b"SCAN": numbered(5000, b"VLAN_MEMBER|%d")}, None, 2, "more than"),
    ("long keys", {b"SCAN": scan(b"VLAN|" + b"x" * 100000)}, None, 2, "a name of more than"),
    ("long values", {b"HGETALL": texts(b"name", b"x" * 100000)}, None, 2, "a value of more than"),
    ("many members", {b"SCAN": numbered(1000, VLAN_LIST, 4000), b"HGETALL": texts(b"vlan_list@", b"," * 60000)}, None, 2, "more than"),
    ("empty", {b"SCAN": scan()}, None, 2, "empty"),
    ("another database", {b"SCAN": scan(b"users:1")}, None, 2, "none of the tables"),
    ("HTTP", {}, b"HTTP/1.1 400 Bad Request\r\n\r\n", 2, "no Redis server answered at 127.0.0.1:{port} (looks like HTTP)"),
    ("HTML", {}, b"<!DOCTYPE HTML>\n", 2, "(looks like HTTP)"),
    ("TLS", {}, b"\x15\x03\x01\0\2\2\x46", 2, "(looks like TLS)"),
    ("SSH", {}, b"SSH-2.0-OpenSSH\r\n", 2, "(looks like SSH)"),
    ("another", {}, b"220 mail\r\n", 2, "no Redis server answered at 127.0.0.1:{port}"),
]

WATCHED = [  # name, answers that differ from ANSWERS, an expected text, a text that is not expected
    ("many notifications", {b"PSUBSCRIBE": notifications(5), b"HGETALL": lambda words: texts(*ROWS.get(words[1], ()))},
     "the pair agrees", "disconnected"),
    ("endless notifications", {b"PSUBSCRIBE": notifications(10 ** 9)}, "left is disconnected: ", "memory"),
    ("slow notification", {b"PSUBSCRIBE": lambda words: itertools.chain([ANSWERS[b"PSUBSCRIBE"](words)], drip(
        b"*" * words[1].endswith(b"VLAN_MEMBER|*") * 30, 0.2))}, "no complete answer within 1 s", "memory"),
    ("slow rereading", {b"CONFIG": texts(), b"SCAN": lambda _, first=[0, 0, 0, 0]: scan(*ROWS) if first and not first.pop()
                        else scan(cursor=b"7") * (time.sleep(0.2) or 1)}, "not read within 2 s", "memory"),
]


def check_compare(name, answers, greeting, status, text):
    server = MockServer(answers, greeting)
    seconds = 2 if "within" in text else 10  # an answer has half of this time
    code, output, took = run("compare", "--json", "--read-timeout", str(seconds), server.url, server.url)
    found = f"status {code}, {took:.1f} s, {len(output)} bytes: {output[:300]!r}"
    assert code == status and text.format(port=server.url.rpartition(":")[2]) in output, found
    assert took < (6 if seconds == 2 else 60) and max(map(len, output.split("\n"))) < 4096, found


def check_watch(name, answers, text, absent):
    server = MockServer(answers)
    seconds = "20" if absent == "disconnected" else "2"
    lab = subprocess.Popen([LAB, "watch", "--read-timeout", seconds, "--timeout", "60", server.url, server.url], text=True,
                           stdout=subprocess.PIPE, stderr=subprocess.STDOUT, preexec_fn=limit_memory)
    output = ""
    while text not in output and (line := lab.stdout.readline()):
        output += line
    time.sleep(1)  # for the text that is not expected
    lab.send_signal(signal.SIGINT)  # status 2 if the watch is reading endless data
    output += lab.communicate(timeout=60)[0]
    assert lab.returncode in (0, 2) and text in output and absent not in output, \
        f"{name}: status {lab.returncode}: {output!r}"


def check_passwords(folder):
    """Errors do not contain passwords. Each server receives its own password only."""
    secret, server = "redis:/u:s3cret@h", MockServer({})
    lines = pathlib.Path(folder, "pairs")
    for words in [["run", secret], ["run", "--json", "redis://u:s3cret@h"], ["what-if", secret, "1"], ["compare", secret, "x"],
                  ["compare", "--json", "u:s3cret@h", "x"], ["compare", "x", "y", "u:s3cret@h"], ["watch", "Redis:u:s3cret@h", "x"],
                  ["compare", "--wrong=u:s3cret@h"], ["watch", "x", "y", "--interval", secret], ["u:s3cret@h"],
                  ["capture", "rediss://u:s3cret@h"], ["compare", "--pairs", str(lines)]]:
        lines.write_text(f"one redis://u:s3cret{'x' * 80}@h\ntwo\t{secret}\tu:s3cret@h\n")
        code, output, _ = run(*words)
        assert code == 2 and output and "s3cret" not in output, (words, code, output)
    own = server.url.replace("//", "//:own@")
    lines.write_text(f"one\t{server.url}\t{own}\n")
    for words in [["compare", server.url, own], ["compare", "--pairs", str(lines)]]:
        assert run(*words, MCEC_LEFT_PASSWORD="left", MCEC_RIGHT_PASSWORD="right")[0] == 0
    logins = [words[1] for words in server.requests if words[0] == b"AUTH"]
    assert sorted(logins) == [b"left"] * 2 + [b"own"] * 4, logins


def check_stopped_worker(folder):
    """A comparison of a list that does not end is killed."""
    pipe, lines = pathlib.Path(folder, "pipe"), pathlib.Path(folder, "stopped")
    os.mkfifo(pipe)
    lines.write_text("one\tpipe\tpipe\n")
    writer = os.open(pipe, os.O_RDWR)
    status, output, _ = run("compare", "--read-timeout", "0.2", "--pairs", str(lines))
    os.close(writer)
    assert status == 2 and "did not end within 0.6 s" in output, output


def main():
    failures = 0
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(8) as pool:
        running = {pool.submit(check_stopped_worker, folder): "stopped", pool.submit(check_passwords, folder): "passwords"}
        running |= {pool.submit(check_watch, *row): row[0] for row in WATCHED}
        running |= {pool.submit(check_compare, *row): row[0] for row in COMPARED}
        for ended in concurrent.futures.as_completed(running):
            if ended.exception():
                failures += 1
                print(f"{running[ended]} failed: {ended.exception()}", file=sys.stderr)
    return 1 if failures else 0


if __name__ == "__main__":
    os._exit(main())
