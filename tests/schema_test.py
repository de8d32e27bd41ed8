#!/usr/bin/python3
"""Validate the JSON documents of mcec-lab with packaging/documents.schema.json.

  tests/schema_test.py MCEC-LAB FOLDER

The schema allows unknown fields. This test does not, so that a new field must be added to the schema. It
runs with the Python of Debian, which has the validator. State files remain in FOLDER.
"""
import json
import pathlib
import signal
import subprocess
import sys

import jsonschema

from common import ROOT, replace_file

lab, folder = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
schema = json.loads((ROOT / "packaging/documents.schema.json").read_text())
jsonschema.Draft202012Validator.check_schema(schema)
checked = errors = 0


def close(node):
    """Disallow unknown fields in a schema, except in conditions (if, then, else)."""
    if isinstance(node, list):
        return [close(item) for item in node]
    if not isinstance(node, dict):
        return node
    closed = {key: value if key in ("if", "then", "else") else close(value)
              for key, value in node.items()}
    return {"additionalProperties": False, **closed} if "properties" in node else closed


def validators_of(definitions):
    return {name: jsonschema.Draft202012Validator(
        {"$defs": definitions, "$ref": f"#/$defs/{name}"}) for name in
        [branch["$ref"].rpartition("/")[2] for branch in schema["oneOf"]]}


closed, shipped = validators_of(close(schema["$defs"])), validators_of(schema["$defs"])


def check(kind, documents, count, source):
    """Check that there are count documents, and that each is valid as this kind only, also with an unknown field."""
    global checked, errors
    problems = [f"{len(documents)} documents"] if len(documents) != count else []
    for document in documents:
        checked += 1
        problems += [f"{problem.json_path}: {problem.message}"[:300]
                     for problem in closed[kind].iter_errors(document)]
        more = {**document, "more": 0}
        problems += [f"with an unknown field {'not ' if name == kind else ''}valid as {name}"
                     for name, validator in shipped.items()
                     if validator.is_valid(more) != (name == kind)]
        if closed[kind].is_valid(more):
            problems.append("an unknown field is not detected")
    errors += len(problems)
    for problem in problems:
        print(f"{kind} of {source}: {problem}", file=sys.stderr)


def run(kind, *words, count=1, text=None):
    ran = subprocess.run([lab, *words], cwd=folder, input=text, text=True, timeout=120,
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    documents, rest = [], ran.stdout.strip()
    while rest:
        document, end = json.JSONDecoder().raw_decode(rest)
        documents.append(document)
        rest = rest[end:].strip()
    check(kind, documents, count, " ".join(map(str, words)))
    return documents


folder.mkdir(parents=True, exist_ok=True)
run("list", "list", "--json")
scenarios = sorted((ROOT / "scenarios").glob("*.yaml"))
for document in run("run", "run", "--json", "--log", *scenarios, count=len(scenarios)):
    steps = [step["step"] for step in document["steps"] if step["action"] in ("command", "update")]
    for step in steps[:2]:
        if "what_if" not in run("run", "what-if", "--json", document["scenario"], str(step))[0]:
            check("run", [], 1, f"what-if {document['scenario']} {step}: no answer")
INCONSISTENT = """
switches:
  left: {ports: [{ports: 1-2, channel: 3}, {ports: 2, parameters: {ifi-port-guard: root}}]}
steps: [{check: all}, {crash: KILL, on: left}]"""
run("run", "run", "--json", "-", text=INCONSISTENT)
run("errors", "run", "--json", "-", text=INCONSISTENT.replace("KILL", "kill"))
run("errors", "run", "--json", "no-such.yaml")

pairs = {}
for left in sorted((ROOT / "captures").glob("*-left.json")):
    dumps = [left, left.with_name(left.name.replace("-left", "-right"))]
    states = [folder / dump.with_suffix(".yaml").name for dump in dumps]
    for dump, state in zip(dumps, states):
        state.write_bytes(subprocess.run([lab, "capture", dump], check=True,
                                         stdout=subprocess.PIPE).stdout)
    documents = [run("comparison", "compare", "--json", *sides)[0] for sides in
                 (dumps, states, (dumps[0], states[1]), ("--intended", *dumps))]
    pairs[left.stem] = dumps
    if len({document["verdict"] for document in documents}) != 1:
        check("comparison", [], 1, f"{left.stem}: dumps and state files have different verdicts")
    run("comparison", "compare", "--json", *dumps, "--write-accept", "accept.yaml")
    run("comparison", "compare", "--json", "--strict", *dumps, "--accept", "accept.yaml")
files = [file for dumps in pairs.values() for file in dumps]
for left in files:
    run("comparison", "compare", "--json", left, files[-1])  # modes, regions and guards differ

(folder / "off.json").write_text('{"STP": {"GLOBAL": {"mode": "none"}}}')
(folder / "bare.json").write_text('{"STP": {"GLOBAL": {"mode": "pvst"}}}')
run("comparison", "compare", "--json", "off.json", files[0])
run("comparison", "compare", "--json", "bare.json", "bare.json")  # incomplete
for wrong in ("{", "[]", '{"STP": {"GLOBAL": {"mode": "x"}}, "VLAN": {"Vlan0": {}}}', "trunk: x"):
    (folder / "wrong").write_text(wrong)
    run("errors", "compare", "--json", "wrong", files[0])
lines = "".join(f"{name}\t{left}\t{right}\n" for name, (left, right) in pairs.items())
(folder / "pairs").write_text(lines)
run("comparison", "compare", "--json", "--pairs", "pairs", count=len(pairs))
(folder / "pairs").write_text("one\twrong\twrong\ntwo\n")
run("errors", "compare", "--json", "--pairs", "pairs", count=2)

# A file of a pair that changes, causes a warning, is invalid, removed, and restored.
watched = folder / "watched.json"
watched.write_bytes(files[0].read_bytes())
(folder / "pairs").write_text(f"one\t{watched}\t{files[1]}\n")
with subprocess.Popen([lab, "watch", "--json", "--interval", "0.05", "--timeout", "60", "--pairs",
                       folder / "pairs"], stdout=subprocess.PIPE) as watch:
    for event, text in (("compared", files[2].read_text()), ("changed", None),
                        ("note", "{"), ("error", None),
                        ("disconnected", files[2].read_text()), ("connected", None),
                        ("summary", None)):
        if event == "summary":
            watch.send_signal(signal.SIGUSR1)
        found = json.loads(watch.stdout.readline())
        check("event", [found] if found["event"] == event else [], 1, event)
        if text:
            replace_file(watched, text)
        elif event == "error":
            watched.unlink()
    watch.terminate()

print(f"{checked} documents, {errors} errors")
sys.exit(1 if errors or checked < 50 else 0)
