#!/usr/bin/python3
"""Validate the documents of the lab with docs/documents.schema.json.

  tests/schema_test.py MCEC-LAB FOLDER

The validator is Debian's, hence its Python. State files stay in FOLDER.
"""
import json
import pathlib
import subprocess
import sys

import jsonschema

lab, folder = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
root = pathlib.Path(__file__).resolve().parent.parent
schema = json.loads((root / "docs/documents.schema.json").read_text())
jsonschema.Draft202012Validator.check_schema(schema)
valid = bad = 0


def validate(kind, documents, count, why):
    """So many documents, each of this kind and of no other, and none with a field too many."""
    global valid, bad
    validators = {name: jsonschema.Draft202012Validator(
        {"$defs": schema["$defs"], "$ref": f"#/$defs/{name}"}) for name in
        [branch["$ref"].rpartition("/")[2] for branch in schema["oneOf"]]}
    problems = [f"{len(documents)} documents"] if len(documents) != count else []
    for document in documents:
        valid += 1
        problems += [f"{problem.json_path}: {problem.message}"[:300]
                     for problem in validators[kind].iter_errors(document)]
        problems += [f"it is a document of {name}, too" for name, validator in validators.items()
                     if name != kind and validator.is_valid(document)]
        if validators[kind].is_valid({**document, "more": 0}):
            problems.append("a field more is taken")
    bad += len(problems)
    for problem in problems:
        print(f"{kind} of {why}: {problem}", file=sys.stderr)


def ask(kind, *words, count=1, text=None):
    ran = subprocess.run([lab, *words], cwd=folder, input=text, text=True, timeout=120,
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    documents, rest = [], ran.stdout.strip()
    while rest:
        document, end = json.JSONDecoder().raw_decode(rest)
        documents.append(document)
        rest = rest[end:].strip()
    validate(kind, documents, count, " ".join(map(str, words)))
    return documents


folder.mkdir(parents=True, exist_ok=True)
scenarios = sorted((root / "scenarios").glob("*.yaml"))
for run in ask("run", "run", "--json", "--log", *scenarios, count=len(scenarios)):
    asked = [step["step"] for step in run["steps"] if step["action"] in ("command", "update")]
    for step in asked[:2]:
        documents = ask("run", "what-if", "--json", run["scenario"], str(step))[0]
        if "what_if" not in documents:
            validate("run", [], 1, f"what-if {run['scenario']} {step}: no answer")
SCENARIO = """
switches:
  left: {ports: [{ports: 1-2, channel: 3}, {ports: 2, parameters: {ifi-port-guard: root}}]}
steps: [{check: all}, {crash: KILL, on: left}]"""
ask("run", "run", "--json", "-", text=SCENARIO)
ask("errors", "run", "--json", "-", text=SCENARIO.replace("KILL", "kill"))
ask("errors", "run", "--json", "no-such.yaml")

pairs = {}
for left in sorted((root / "captures").glob("*-left.json")):
    dumps = [left, left.with_name(left.name.replace("-left", "-right"))]
    states = [folder / dump.with_suffix(".yaml").name for dump in dumps]
    for dump, state in zip(dumps, states):
        state.write_bytes(subprocess.run([lab, "capture", dump], check=True,
                                         stdout=subprocess.PIPE).stdout)
    documents = [ask("comparison", "compare", "--json", *sides)[0] for sides in
            (dumps, states, (dumps[0], states[1]))]
    pairs[left.stem] = dumps
    if len({json.dumps(document["agree"]) for document in documents}) != 1:
        validate("comparison", [], 1, f"{left.stem}: dumps and state files give different verdicts")
files = [file for dumps in pairs.values() for file in dumps]
for left in files:
    ask("comparison", "compare", "--json", left, files[-1])  # modes, regions and guards at odds

(folder / "off.json").write_text('{"STP": {"GLOBAL": {"mode": "none"}}}')
ask("comparison", "compare", "--json", "off.json", files[0])
for wrong in ("{", "[]", '{"STP": {"GLOBAL": {"mode": "x"}}, "VLAN": {"Vlan0": {}}}', "trunk: x"):
    (folder / "wrong").write_text(wrong)
    ask("errors", "compare", "--json", "wrong", files[0])
lines = "".join(f"{name}\t{left}\t{right}\n" for name, (left, right) in pairs.items())
(folder / "pairs").write_text(lines)
ask("comparison", "compare", "--json", "--pairs", "pairs", count=len(pairs))
(folder / "pairs").write_text("one\twrong\twrong\ntwo\n")
ask("errors", "compare", "--json", "--pairs", "pairs", count=2)

# A file that changes, makes no sense, goes and comes back.
watched, new = folder / "watched.json", folder / "new.json"
watched.write_bytes(files[0].read_bytes())
with subprocess.Popen([lab, "watch", "--json", "--interval", "0.05", "--timeout", "60", watched,
                       files[1]], stdout=subprocess.PIPE) as watch:
    for event, text in (("compared", files[2].read_text()), ("changed", "{"), ("error", None),
                        ("disconnected", files[2].read_text()), ("connected", None)):
        documents = json.loads(watch.stdout.readline())
        validate("event", [documents] if documents["event"] == event else [], 1, event)
        if text:
            new.write_text(text)
            new.rename(watched)
        elif event == "error":
            watched.unlink()
    watch.terminate()

print(f"{valid} documents, {bad} errors")
sys.exit(1 if bad or valid < 50 else 0)
