#!/usr/bin/env python3
"""Runs every --json command of cubrix-cli and holds its output to docs/json/.

validate_json.py CUBRIX_CLI SOURCE_DIR
Edit commands work on a copy of examples/Castle.bset; the cache listing reads a
Wine prefix made here. Each run must end with its exit status and print an
object its schema accepts; the schemas themselves must refuse renamed, missing
and extra keys.
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import warnings

with warnings.catch_warnings():
    warnings.simplefilter("ignore", DeprecationWarning)
    from jsonschema import Draft202012Validator, RefResolver

cli, source = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
schemas = source / "docs" / "json"
failures = []


def validator(name):
    path = schemas / f"{name}.schema.json"
    schema = json.loads(path.read_text())
    Draft202012Validator.check_schema(schema)
    return Draft202012Validator(schema, resolver=RefResolver(path.as_uri(), schema))


def open_objects(node, where):
    """Object schemas that let unknown keys through."""
    if isinstance(node, dict):
        if node.get("type") == "object" and "additionalProperties" not in node:
            yield where
        for key, value in node.items():
            yield from open_objects(value, f"{where}/{key}")
    elif isinstance(node, list):
        for i, value in enumerate(node):
            yield from open_objects(value, f"{where}/{i}")


for path in sorted(schemas.glob("*.schema.json")):
    failures += [f"{path.name}: object without additionalProperties at {w}"
                 for w in open_objects(json.loads(path.read_text()), "#")]

tmp = pathlib.Path(tempfile.mkdtemp(prefix="cubrix-json-"))
work = tmp / "work"
work.mkdir()
(tmp / "temp").mkdir()
bset = work / "Castle.bset"
shutil.copy(source / "examples" / "Castle.bset", bset)
bset.chmod(0o644)
# A block file with a vertex list Rover refuses: check reports it with its line.
(work / "broken.block").write_bytes(
    b'<BLOCK NAME="broken" TYPE="structural">\r\n<VERTICES>\r\n<VERTEX REF="1" COORDS="(0,0,0)"/>\r\n'
    b'</VERTICES>\r\n<PARTS>\r\n<PART NAME="p" TEXTURE="stone.jpg">\r\n<POLYGON REF="1" VERTICES="1 2 3"/>\r\n'
    b'</PART>\r\n</PARTS>\r\n</BLOCK>\r\n')

# A Wine prefix whose Internet Explorer has Rover, with a cache holding the
# castle (dated by the index) and a file that is no archive.
prefix = tmp / "prefix"
cache = prefix / "drive_c" / "Rover" / "flatland"
(cache / "a.example").mkdir(parents=True)
shutil.copy(source / "examples" / "Castle.bset", cache / "a.example" / "Castle.bset")
(cache / "broken.bset").write_bytes(b"not a zip")
(cache / "cache.txt").write_bytes(
    b'<CACHE>\r\n\t<BLOCKSET HREF="http://a.example/Castle.bset" SIZE="1" UPDATED="1600000000"/>\r\n</CACHE>\r\n')
(prefix / "dosdevices").mkdir()
os.symlink("../drive_c", prefix / "dosdevices" / "c:")
(prefix / "system.reg").write_text(
    'WINE REGISTRY Version 2\n\n[Software\\\\Microsoft\\\\Internet Explorer\\\\Plugins\\\\Extension\\\\.3dml] 1\n'
    '"Location"="C:\\\\Rover\\\\np.dll"\n')

env = dict(os.environ, CUBRIX_REGISTRY=str(tmp / "registry.reg"), Temp=str(tmp / "temp"), HOME=str(tmp),
           WINEPREFIX=str(prefix), QT_QPA_PLATFORM="offscreen")
B = str(bset)
# schema, arguments, exit status
runs = [
    ("info", ["info", B], 0),
    ("check", ["check", B], 0),
    ("add", ["add", B, str(work / "broken.block")], 0),
    ("check", ["check", B], 1),
    ("bsp", ["bsp", B, "--rebuild"], 1),
    ("remove", ["remove", B, "broken.block", "bell.wav"], 0),
    ("rename", ["rename", B, "wall.block", "keep.block"], 0),
    ("replace", ["replace", B, "keep.block"], 0),
    ("symbols", ["symbols", B, "keep.block", "Z", ".Z"], 0),
    ("symbols", ["symbols", B, "keep.block", "a", ".a"], 1),
    ("remap", ["remap", B, "--all", "--prefix", "!"], 0),
    ("prefix", ["prefix", B, "x"], 0),
    ("set", ["set", B, "skyColor", "(1,2,3)"], 0),
    ("set", ["set", B, "skyColor", "(1,2,300)"], 1),
    ("bsp", ["bsp", B], 0),
    ("shrink", ["shrink", B, "--fit"], 0),
    ("shrink", ["shrink", B], 0),
    ("cache", ["cache"], 0),
    ("cache", ["cache", "--browser", "netscape"], 1),
]
outputs = {}
for name, arguments, expected in runs:
    done = subprocess.run([cli, *arguments, "--json"], env=env, capture_output=True, timeout=120)
    label = " ".join([name, *arguments[2:]])
    if done.returncode != expected:
        failures.append(f"{label}: exit {done.returncode}, expected {expected}: {done.stderr.decode()}")
    if expected != 0 and not done.stdout:
        continue  # refused before any report, as the listing with a browser without Rover
    try:
        report = json.loads(done.stdout)
    except ValueError as error:
        failures.append(f"{label}: no JSON: {error}")
        continue
    failures += [f"{label}: {e.json_path}: {e.message}" for e in validator(name).iter_errors(report)]
    outputs.setdefault(name, report)

unused = {p.name.split(".")[0] for p in schemas.glob("*.schema.json")} - set(outputs) - {"edit"}
failures += [f"{name}.schema.json: no command's output was checked against it" for name in sorted(unused)]

# The schemas refuse a renamed, a missing and an extra key.
for name, change in [("info", lambda r: r["symbols"].update(strictPrefixOn=r["symbols"].pop("strictPrefix"))),
                     ("set", lambda r: r.pop("results")),
                     ("cache", lambda r: r["rows"][0].update(url="")),
                     ("check", lambda r: r["findings"][0].pop("line"))]:
    if name in outputs:
        report = json.loads(json.dumps(outputs[name]))
        change(report)
        if validator(name).is_valid(report):
            failures.append(f"{name}.schema.json accepts a changed key")

shutil.rmtree(tmp, ignore_errors=True)
for failure in failures:
    print(failure)
print(f"{len(runs)} cubrix-cli runs checked against docs/json: {len(failures)} failures")
sys.exit(1 if failures else 0)
