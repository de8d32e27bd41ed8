"""Functions of several Python tests: expectations, waiting, files, and Redis servers."""
import itertools
import json
import os
import pathlib
import socket
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
PATIENCE = 60  # seconds to wait for an event on a loaded machine
faults, started, numbers = [], [], itertools.count()


def expect(is_met, name, found):
    if not is_met:
        faults.append(name)
        print(f"{name}: {found}", file=sys.stderr)


def captures(name):
    return [str(ROOT / "captures" / f"{name}-{side}.json") for side in ("left", "right")]


def is_instrumented(program):
    """Whether a program has sanitizers or measures coverage."""
    return any(mark in pathlib.Path(program).read_bytes() for mark in (b"__asan_init", b"__gcov_"))


def within(find_problems, seconds=PATIENCE):
    """Wait until no problem is found."""
    ends = time.monotonic() + seconds
    while problems := find_problems():
        assert time.monotonic() < ends, f"after {seconds} s: {str(problems)[:2000]}"
        time.sleep(0.01)


def start(command, **options):
    started.append(subprocess.Popen(command, **options))
    return started[-1]


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as listener:
        return listener.getsockname()[1]


def replace_file(path, text):
    new = pathlib.Path(f"{path}.new")
    new.write_text(text)
    new.rename(path)


def parse_fields(fields):
    """Convert fields of a database as a dump has them: lists end in '@', and NULL is a placeholder."""
    return {field.rstrip("@"): value.split(",") if field.endswith("@") else value
            for field, value in fields.items() if field != "NULL"}


def format_dump(rows):
    tables = {}
    for name, fields in rows.items():
        table, _, key = name.partition("|")
        tables.setdefault(table, {})[key] = parse_fields(fields)
    return json.dumps(tables)


def commands_for(rows):
    """The commands that write rows."""
    return [["HSET", row, *itertools.chain(*fields.items())] for row, fields in rows.items()]


def read_answer(stream):
    line = stream.readline()[:-2].decode()
    if line[:1] == "*":
        return [read_answer(stream) for _ in range(int(line[1:]))]
    if line[:1] == "$" and line != "$-1":
        return stream.read(int(line[1:]) + 2)[:-2].decode()
    assert line[:1] in ("+", ":", "$"), line
    return line[1:]


class RedisServer:
    """A redis-server on a TCP port or a Unix socket. It ends with the test."""

    def __init__(self, folder, *options, port=None, password="", rows={}):
        self.port, self.password, self.rows, self.connections = port, password, rows, 0
        name = f"{folder}/redis-{next(numbers)}"
        self.path = f"{name}.sock"
        self.url = f"redis://127.0.0.1:{port}" if port else f"unix://{self.path}"
        address = ["--port", str(port)] if port else ["--port", "0", "--unixsocket", f"{self.path}.new"]
        login = ["--requirepass", password] if password else []
        self.command = ["setpriv", "--pdeathsig", "KILL", "redis-server", *address, *login, "--save", "", "--dir", folder,
                        "--dbfilename", f"{pathlib.Path(name).name}.rdb", "--notify-keyspace-events", "KEA", *options]
        self.start()

    def start(self):
        self.process = start(self.command, stdout=subprocess.DEVNULL)
        new = f"{self.path}.new"
        within(lambda: not self.can_answer(new))
        self.do(*commands_for(self.rows), path=new)
        if not self.port:
            os.rename(new, self.path)  # now that it has all rows

    def stop(self):
        self.process.kill()
        self.process.wait()

    def can_answer(self, path):
        try:
            return self.do(["PING"], path=path)
        except (OSError, AssertionError):  # it loads its data
            return False

    def do(self, *commands, database=4, path=None, password=None):
        """Execute commands on one connection, and return their answers."""
        password = self.password if password is None else password
        first = [*([["AUTH", password]] if password else []), ["SELECT", str(database)]]
        with socket.socket(socket.AF_INET if self.port else socket.AF_UNIX) as connection:
            connection.settimeout(PATIENCE)
            connection.connect(("127.0.0.1", self.port) if self.port else path or self.path)
            self.connections += 1
            encoded = [[word.encode() for word in words] for words in [*first, *commands]]
            connection.sendall(b"".join(b"*%d\r\n" % len(words) + b"".join(b"$%d\r\n%s\r\n" % (len(word), word) for word in words)
                                        for words in encoded))
            stream = connection.makefile("rb")
            return [read_answer(stream) for _ in encoded][len(first):]
