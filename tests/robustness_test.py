#!/usr/bin/env python3
"""Test mcec-lab with failing switches, and without memory, file descriptors or disk space.

  tests/robustness_test.py MCEC-LAB

In every case the lab ends soon, with a message and status 2 (or 0 or 1, if it did not need the missing
resource), and no process or file remains.
"""
import concurrent.futures
import ctypes
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

from common import ROOT, captures, expect, faults, is_instrumented

LAB = os.path.abspath(sys.argv[1])
CAPTURES = captures("vlans")
LIBC = ctypes.CDLL(None, use_errno=True)
PIDFD_GETFD = 438


def check_end(name, lab, folder, before, texts, statuses=(2,)):
    """Wait for a lab, and check its status, its output, and that no process or file remains."""
    try:
        output = lab.communicate(timeout=60)[0].decode(errors="replace")
    except subprocess.TimeoutExpired:
        os.killpg(lab.pid, signal.SIGKILL)
        output = lab.communicate()[0].decode(errors="replace")
        expect(False, name, "it does not end")
    expect(lab.returncode in statuses, name, f"status {lab.returncode}: {output}")
    expect(lab.returncode != 2 or any(text in output for text in texts), name, f"output {output!r}")
    expect("LOST" not in output, name, output)
    for _ in range(100):  # until the kernel has removed all processes
        try:
            os.killpg(lab.pid, 0)
        except ProcessLookupError:
            break
        time.sleep(0.05)
    else:
        expect(False, name, "a process remains")
    expect(sorted(os.listdir(folder)) == before, name, f"files remain: {os.listdir(folder)}")


def start(folder, *arguments, limit="true"):
    return subprocess.Popen(["bash", "-c", f"{limit} && exec \"$0\" \"$@\"", LAB, *arguments], cwd=folder,
                            start_new_session=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT)


def switches_of(lab):
    """Return the processes of the left and the right switch, once both have started."""
    for _ in range(600):
        found = subprocess.run(["pgrep", "-P", str(lab.pid)], stdout=subprocess.PIPE).stdout.split()
        if len(found) == 2:
            return sorted(map(int, found))
        time.sleep(0.05)
    raise RuntimeError("the lab has no two switches")


def sockets_of(pid):
    """Return copies of the sockets of a switch: to the lab, and to the other switch."""
    numbers = [int(entry.name) for entry in pathlib.Path(f"/proc/{pid}/fd").iterdir()
               if os.readlink(entry).startswith("socket:")]
    pidfd = os.pidfd_open(pid)
    copies = [LIBC.syscall(PIDFD_GETFD, pidfd, number, 0) for number in sorted(numbers)]
    os.close(pidfd)
    if -1 in copies or len(copies) != 2:
        raise RuntimeError(f"the sockets of {pid}: {os.strerror(ctypes.get_errno())}")
    return [socket.socket(fileno=copy) for copy in copies]


def send(data):
    return lambda pid: [copy.sendall(data, socket.MSG_DONTWAIT) for copy in sockets_of(pid)]


def disconnect(pid):
    for copy in sockets_of(pid):
        copy.shutdown(socket.SHUT_RDWR)


def frame(body):
    return len(body).to_bytes(4, sys.byteorder) + body


def break_switches(folder):
    ports = ", ".join(f"{{ports: {port}, channel: {port}, parameters: {{ifi-port-type: edge}}}}"
                      for port in range(1, 60))
    pathlib.Path(folder, "long.yaml").write_text(
        f"switches: {{left: &it {{parameters: {{stp-mode: mst}}, ports: [{ports}]}}, right: *it}}\n"
        "steps:\n" + "- {check: all}\n" * 1000)
    invalid = ["malformed frame", "switch closed the connection", "array with a wrong length",
               "switch has ended", "ended with status", "does not reply"]

    def break_one(name, attack, texts, side):
        before = sorted(os.listdir(folder))
        lab = start(folder, "run", "--quiet", "long.yaml")
        attacked = switches_of(lab)[side]
        began = time.monotonic()
        attack(attacked)
        title = f"the {('left', 'right')[side]} switch: {name}"
        if len(texts) == 1:
            texts = [f"the {('left', 'right')[side]} {texts[0]}"]
        check_end(title, lab, folder, before, texts)
        expect(time.monotonic() - began < 30, title, "it ends too late")

    return [(break_one, *row, side) for side in (0, 1) for row in [
            ("killed", lambda pid: os.kill(pid, signal.SIGKILL), ["switch was killed by SIGKILL (Killed)"]),
            ("stopped", lambda pid: os.kill(pid, signal.SIGSTOP), ["switch is stopped by a signal"]),
            ("too long frame", send(b"\xff" * 64), invalid),
            ("empty frame", send(frame(b"") * 2), invalid),
            ("invalid frame", send(frame(b"\x07" + b"\xfe" * 4000)), invalid),
            ("disconnected", disconnect, ["switch ended with status", "switch has ended", "switch closed the connection"])]]


def limit_machine(folder):
    shutil.copy(ROOT / "scenarios" / "every-command.yaml", folder)
    pathlib.Path(folder, "pairs").write_text("\t".join(["one", *CAPTURES]) + "\n")
    commands = [["run", "every-command.yaml"], ["compare", *CAPTURES], ["compare", "--pairs", "pairs"],
                ["watch", "--once-agreed", "--timeout", "0.2", *CAPTURES]]
    limits = [f"ulimit -n {count}" for count in (4, 5, 6, 7, 8, 9, 10, 12)]
    if not is_instrumented(LAB):  # sanitizers reserve address space; coverage counters fail without a message
        limits += [f"ulimit -v {size}" for size in range(14000, 34000, 1700)]
    before = sorted(os.listdir(folder))
    texts = ["mcec-lab: ", "NOT COMPARED: ", "cannot be read: ", " for a switch: ", " switch ended with "]

    def limit_one(command, limit):
        # Status 127: the loader has too little memory to start the lab.
        lab = start(folder, *command, limit=limit)
        check_end(f"{' '.join(command)}, {limit}", lab, folder, before, texts, (0, 1, 2, 127))

    return [(limit_one, command, limit) for command in commands for limit in limits]


def fill_disk(folder):
    """Write files that do not fit into a file system of 8 KiB, if one can be mounted."""
    full = pathlib.Path(folder, "full")
    full.mkdir()
    if subprocess.run(["unshare", "-rm", "true"], stderr=subprocess.DEVNULL).returncode != 0:
        print("skipped: no file system can be mounted")
        return
    begin = ("mount -t tmpfs -o size=8k none full && head -c 4096 /dev/zero >full/other && "
             "echo old >full/kept.html; \"$0\" \"$@\"; status=$?; "
             "test \"$(ls full)\" = \"$(printf 'kept.html\\nother')\" && grep -qx old full/kept.html || "
             "echo LOST: full/*; exit $status")
    for options in (["--html", "full/kept.html"], ["--html", "full/new.html"],
                    ["--patch", "both", "full/new.json", "--html", "/dev/full"]):
        lab = subprocess.Popen(["unshare", "-rm", "bash", "-c", begin, LAB, "compare", *options, *CAPTURES],
                               cwd=folder, start_new_session=True, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT)
        check_end(" ".join(options), lab, folder, sorted(os.listdir(folder)), ["No space left on device\n"])


def main():
    with tempfile.TemporaryDirectory() as folder:
        cases = break_switches(folder) + limit_machine(folder)
        with concurrent.futures.ThreadPoolExecutor(8 * os.cpu_count()) as pool:  # most threads wait
            for running in [pool.submit(*case) for case in cases]:
                running.result()
        fill_disk(folder)
    print(f"{len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
