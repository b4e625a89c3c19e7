#!/usr/bin/python3
"""What the program prints as JSON, against the schemas that are installed with it.

SchemasTest.py SCHEMAS PROGRAM...: the folder of the schemas, and the program with what runs it.
"""

import copy
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import jsonschema

SCHEMAS = pathlib.Path(sys.argv[1]).resolve()
PROGRAM = sys.argv[2:]
VALIDATOR = jsonschema.Draft202012Validator

# Which schema describes which option of which command.
SCHEMA_OF = {
    ("apply", "--json"): "apply",
    ("apply", "--json-lines"): "apply-line",
    ("filters", "--json"): "filters",
    ("describe", "--json"): "describe",
    ("fonts", "--json"): "fonts",
    ("box list", "--json"): "box-list",
    ("box tree", "--json"): "box-tree",
    ("box info", "--json"): "box-info",
}
# These are arrays, or have keys that are fixed: the version stands in the schema's name alone.
WITHOUT_VERSION = {"filters", "fonts", "box-list", "box-tree", "box-info"}


def run(*arguments, status=0):
    done = subprocess.run([*PROGRAM, *arguments], capture_output=True, check=False, timeout=60)
    assert done.returncode == status, (arguments, done.returncode, done.stderr)
    return done.stdout.decode("utf-8")


def schema_of(name):
    return json.loads((SCHEMAS / f"{name}-1.json").read_text(encoding="utf-8"))


def objects_in(schema):
    """Every description of an object within a schema."""
    if isinstance(schema, dict):
        if "properties" in schema:
            yield schema
        schema = list(schema.values())
    if isinstance(schema, list):
        for part in schema:
            yield from objects_in(part)


def check_schema(name):
    schema = schema_of(name)
    VALIDATOR.check_schema(schema)
    assert schema["$id"].endswith(f"/{name}-1.json"), schema["$id"]
    for description in objects_in(schema):
        assert description["additionalProperties"] is False, name
        assert description["required"] == list(description["properties"]), name
    has_version = "version" in schema.get("properties", {})
    assert has_version == (name not in WITHOUT_VERSION), name


def objects_of(value):
    """Every object within an output."""
    if isinstance(value, dict):
        yield value
        value = list(value.values())
    if isinstance(value, list):
        for part in value:
            yield from objects_of(part)


def check_changes(name, output, validator):
    """A key more, a key less and a value of another kind are found, wherever they are."""
    for number, place in enumerate(objects_of(output)):
        for key in [*place, None]:
            changed = copy.deepcopy(output)
            there = list(objects_of(changed))[number]
            if key is None:
                there["another key"] = 0
            else:
                del there[key]
            assert not validator.is_valid(changed), (name, key)
            if key is not None:
                there[key] = [0]
                assert not validator.is_valid(changed), (name, key, "of another kind")


SEEN = {}


def check(name, text):
    output = json.loads(text)
    validator = VALIDATOR(schema_of(name))
    for error in validator.iter_errors(output):
        sys.exit(f"{name}: {error.json_path}: {error.message}\n{text}")
    order = [list(each) for each in objects_of(output)]
    expected = [list(each["properties"]) for each in objects_in(validator.schema)]
    assert all(keys in expected for keys in order), f"{name}: the keys stand in another order"
    if name not in SEEN or len(text) < 5000:
        check_changes(name, output if len(text) < 20000 else output[:3], validator)
    SEEN.setdefault(name, []).append(output)
    return output


# --- the commands


def options_in_manual(folder):
    """Every option of every command that prints JSON, of what the program says of itself."""
    run("pages", folder)
    found = set()
    for page in pathlib.Path(folder, "man").glob("fxbox-*.1"):
        for option in re.findall(r"(?m)^\\fB((?:\\-|[a-z])+)\\fR", page.read_text("utf-8")):
            if "json" in option:
                command = page.stem[len("fxbox-") :].replace("-", " ")
                found.add((command, option.replace("\\", "")))
    return found


def write_pictures():
    for name in ("a", "b", "c"):
        pathlib.Path(f"{name}.ppm").write_bytes(b"P6\n3 2\n255\n" + bytes(range(18)))
    pathlib.Path("deep.pgm").write_bytes(b"P5\n2 1\n65535\n" + bytes(range(4)))
    pathlib.Path("broken.ppm").write_bytes(b"P6\n3 2\n255\n")
    pathlib.Path("out").mkdir()
    pathlib.Path("out/b.ppm").write_bytes(b"P6\n1 1\n255\nabc")


def check_apply():
    inputs = ["a.ppm", "b.ppm", "deep.pgm", "missing.ppm", "broken.ppm"]
    common = ["apply", "-c", "ZNFilter.Sepia.1(Sepia=050)", "--skip-existing", "-o", "out", *inputs]
    lines = run(*common, "--json-lines", status=1).splitlines()
    statuses = sorted(check("apply-line", line)["status"] for line in lines)
    assert statuses == ["done", "done", "failed", "failed", "skipped"], statuses
    report = check("apply", run(*common, "--json", status=1))
    assert len(report["files"]) == len(inputs) and not report["interrupted"]
    size = {"width": 3, "height": 2}
    sizes = {line["input"]: (line["inputSize"], line["outputSize"]) for line in SEEN["apply-line"]}
    assert sizes["a.ppm"] == (size, size) and sizes["missing.ppm"] == (None, None), sizes
    assert any(line["notes"] for line in SEEN["apply-line"]), "no output has notes"
    assert [file["skipped"] for file in report["files"]] == [True] * 3 + [False] * 2
    for line in SEEN["apply-line"]:
        there = pathlib.Path(line["output"]).read_bytes() if line["output"] else None
        digest = there and (len(there), hashlib.sha256(there).hexdigest())
        assert (line["bytes"], line["sha256"]) == (digest or (None, None)), line


def check_filters():
    classes = check("filters", run("filters", "--json"))
    assert len(classes) == 46
    for entry in classes:
        check("describe", run("describe", entry["progId"], "--json"))
    kinds = {key["kind"] for output in SEEN["describe"] for key in output["keys"]}
    assert {"whole number", "0 or 1", "text"} <= kinds, kinds


def check_boxes():
    run("apply", "--quiet", "-c", "", "-o", "photo.jpg", "a.ppm")
    run("box", "add", "a.box", "a.ppm", "--at", "-93,-51")
    run("box", "add", "a.box", "photo.jpg", "--native")
    run("box", "note", "a.box", "photo", "green")
    run("box", "copy", "a.box", "a", "a.box", "old", "--old")
    assert len(check("box-list", run("box", "list", "a.box", "--json"))) == 3
    for name in ("a", "photo", "old"):
        check("box-info", run("box", "info", "a.box", name, "--json"))
    for box in ("a.box", "folder/"):
        run("box", "add", box, "b.ppm")
        types = {each["type"] for each in check("box-tree", run("box", "tree", box, "--json"))}
        assert "stream" in types, box
    assert "version" not in SEEN["box-info"][0]


def main():
    offered = {file.name[: -len("-1.json")] for file in SCHEMAS.glob("*.json")}
    assert offered == set(SCHEMA_OF.values()), offered
    for name in offered:
        check_schema(name)
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        assert options_in_manual("pages") == set(SCHEMA_OF), options_in_manual("pages")
        write_pictures()
        check_apply()
        check_filters()
        check("fonts", run("fonts", "--json"))
        check_boxes()
        os.chdir("/")
    assert set(SEEN) == offered, "a schema without an output"


main()
