#!/usr/bin/env python3
"""Test mcec-lab with files that are not regular, and with signals while it waits.

  tests/files_test.py MCEC-LAB
"""
import os
import pathlib
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time

from common import captures, expect, faults

LAB = os.path.abspath(sys.argv[1])
LEFT, RIGHT = captures("vlans")
SECONDS_TO_END = 2


def check_interruption():
    """A signal ends a process that waits for input, parses, or waits for a reader of its output."""
    os.mkfifo("in")
    os.mkfifo("out")
    pathlib.Path("large.yaml").write_text("ports:\n" + "- {ports: 0x1, pod: true}\n" * 600000)
    pathlib.Path("long.yaml").write_text("steps:\n" + "- {check: all}\n" * 20000)
    rows = [
        ("FIFO without a writer", ["compare", "in", RIGHT], 2),
        ("FIFO without a reader", ["compare", "--html", "out", LEFT, RIGHT], 2),
        ("standard input", ["compare", "-", RIGHT], 2),
        ("parser", ["compare", "large.yaml", RIGHT], 2),
        ("full pipe", ["run", "long.yaml"], 2),
        ("full pipe, JSON", ["run", "--json", "long.yaml"], 2),
        ("watch", ["watch", "--metrics", "plain.prom", LEFT, RIGHT], 0),
        ("watch, full pipe", ["watch", "--metrics", "full.prom", "changing.json", RIGHT], 0)]
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        shutil.copy(LEFT, "changing.json")
        labs = [subprocess.Popen([LAB, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE) for _, arguments, _ in rows]
        time.sleep(0.5)
        fill(labs[-1].stdout)
        shutil.copy(RIGHT, "changing.json")
        time.sleep(0.7)
        for (name, _, _), lab in zip(rows, labs):
            expect(lab.poll() is None, name, "it ended without a signal")
            lab.send_signal(number)
        began = time.monotonic()
        for (name, arguments, status), lab in zip(rows, labs):
            title = f"{signal.Signals(number).name}: {name}"
            try:
                lab.wait(timeout=max(0.01, began + SECONDS_TO_END - time.monotonic()))
            except subprocess.TimeoutExpired:
                expect(False, title, "it does not end")
                lab.kill()
                lab.wait()
            output = lab.stderr.read()
            expect(lab.returncode == status, title, f"status {lab.returncode}: {output!r}")
            expect(output.endswith(b"interrupted\n") == (status == 2), title, output)
            if "--metrics" in arguments:
                metrics = pathlib.Path(arguments[2]).read_text()
                expect('side="left"} 0' in metrics, title, metrics)


def fill(output):
    """Fill the pipe to which a process writes."""
    writer = os.open(f"/proc/self/fd/{output.fileno()}", os.O_WRONLY | os.O_NONBLOCK)
    try:
        while True:
            os.write(writer, b"\n" * 1024)
    except BlockingIOError:
        os.close(writer)


def run(command):
    return subprocess.run(["bash", "-c", command, LAB, LEFT, RIGHT], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=30, check=False)


def check_inputs_and_outputs():
    pathlib.Path("secret").write_text("root:$y$hash:19000:0:99999\n")
    pathlib.Path("list").write_text("- secret\n")
    pathlib.Path("from.yaml").write_text(
        "switches: {left: {from: secret}, right: {from: list}}\nsteps: [{check: switch}]\n")
    pathlib.Path("kept.html").write_text("old")
    os.chmod("kept.html", 0o600)
    os.link("kept.html", "victim")
    os.symlink("kept.html", "link.html")
    os.symlink("later.html", "dangling.html")
    shutil.copy(LEFT, "own.json")
    for command, status, text in [
            ('"$0" compare /dev/zero "$2"', 2, "/dev/zero: cannot be read: it is a device; "),
            ('head -c 70000000 /dev/zero | "$0" compare - "$2"', 2, "it is larger than 64 MiB"),
            ('"$0" compare <(cat "$1") "$2"', 1, "DIFFERENT"),
            ('"$0" compare --html link.html "$1" "$2"; cat link.html', 0, "<!DOCTYPE html>"),
            ('"$0" compare --html dangling.html "$1" "$2"; test -L dangling.html && cat later.html', 0,
             "<!DOCTYPE html>"),
            ('"$0" compare --html >(cat) "$1" "$2" | cat', 0, "<!DOCTYPE html>"),
            ('"$0" compare --html /dev/stdout "$1" "$2" >both; cat both', 0, "DIFFERENT"),
            ('cat both', 0, "<!DOCTYPE html>"),
            ('"$0" compare --html own.json own.json "$2"', 2, "which is the left source"),
            ('"$0" compare --patch both new "$1" "$2" --html ./new.right', 2, "which is --html"),
            ('"$0" watch --metrics own.json own.json "$2"', 2, "is also the --metrics file"),
            ('"$0" compare secret "$2"', 2, "secret:1:1: found no mapping; expected a state file"),
            ('"$0" compare --pairs secret', 2, "secret:1:1: found a line of 1 field; expected a name"),
            ('"$0" run secret', 2, "secret:1:1: found no mapping; expected a scenario, a mapping\n"),
            ('"$0" run from.yaml', 2, "in secret:1:1: found no mapping; expected a state file")]:
        ended = run(command)
        output = ended.stdout.decode()
        expect((ended.returncode == status or status == 0) and text in output, command,
               f"status {ended.returncode}: {output[:400]}")
        expect("$y$hash" not in output, command, output)
    expect(pathlib.Path("victim").read_text() == "old", "hard link", "its contents changed")
    expect(stat.S_IMODE(os.stat("kept.html").st_mode) == 0o600, "mode", oct(os.stat("kept.html").st_mode))
    temporary = [name for name in os.listdir() if name.startswith(".")]
    expect(not temporary, "temporary files", temporary)


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        check_inputs_and_outputs()
        check_interruption()
    print(f"{len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
