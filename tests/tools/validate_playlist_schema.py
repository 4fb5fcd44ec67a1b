#!/usr/bin/env python3
"""Checks docs/playlist.schema.json against the document reader of
timeline-convert: every shipped example and test document must satisfy the
schema, and each broken variant of examples/highlight.json must be refused
both by the schema and by the tool (exit status 1). Uses the validator that
scripts/bootstrap.sh installs (python3-jsonschema).

Usage: validate_playlist_schema.py SOURCE_DIR TOOL WORK_DIR
"""
import copy
import glob
import json
import os
import subprocess
import sys

import jsonschema

source_dir, tool, work_dir = sys.argv[1:4]
with open(os.path.join(source_dir, "docs/playlist.schema.json")) as schema_file:
    schema = json.load(schema_file)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
failures = []

shipped = sorted(glob.glob(os.path.join(source_dir, "examples/*.json")) +
                 glob.glob(os.path.join(source_dir, "tests/tools/documents/*.json")))
for path in shipped:
    with open(path) as document_file:
        document = json.load(document_file)
    if os.path.dirname(path).endswith("examples") and "$schema" not in document:
        failures.append(f"{path}: names no $schema")
    for error in validator.iter_errors(document):
        failures.append(f"{path}: {error.json_path}: {error.message}")

with open(os.path.join(source_dir, "examples/highlight.json")) as highlight_file:
    highlight = json.load(highlight_file)
first_element = ("playlist", "audioVideoTrack", "elements", 0)


def broken(name, path, value):
    document = copy.deepcopy(highlight)
    parent = document
    for step in path[:-1]:
        parent = parent[step]
    if value is None:
        del parent[path[-1]]
    else:
        parent[path[-1]] = value
    return name, document


broken_documents = [
    broken("no playlist", ("playlist",), None),
    broken("unknown element field", first_element + ("speedFactor",), 2),
    broken("speed numerator as text", first_element + ("speed",), {"numerator": "1", "denominator": 1}),
    broken("itemNumber beyond int32", first_element + ("itemNumber",), 2147483648),
    broken("clip id of 12 characters", first_element + ("umId",), "CAM-A-000031"),
    broken("unknown boundary kind", first_element + ("inBoundaryKind",), "fromStart"),
    broken("boundary that is not open", ("assets", 0, "timeBounds", 0, "end"), "closed"),
    broken("asset with umId and id", ("assets", 0, "id"), "x"),
    broken("IN value as a fraction", first_element + ("videoInValue",), 1.5),
    broken("serverId beyond uint32", ("playlist", "serverId"), 4294967296),
    broken("speed denominator beyond int32", first_element + ("speed",),
           {"numerator": 1, "denominator": 2147483648}),
    broken("operatorVideoRate as a fraction", ("assets", 0, "operatorVideoRate"), 1.5),
    broken("boundary kind beyond int32", first_element + ("inBoundaryKind",), 2147483648),
]
# Values the reader takes but the conversion always refuses (exit status 2):
# the schema refuses them too. (A whole number written as 3.0 is the one
# thing the reader refuses that no schema can: JSON Schema sees the value 3.)
refused_documents = [
    broken("rate numerator 0", ("playlist", "rate", "numerator"), 0),
    broken("negative rate denominator", ("playlist", "rate", "denominator"), -1),
]
for name, document in refused_documents:
    if validator.is_valid(document):
        failures.append(f"the schema accepts the refused document: {name}")
    path = os.path.join(work_dir, "schema-refused.json")
    with open(path, "w") as refused_file:
        json.dump(document, refused_file)
    status = subprocess.run([tool, "convert", "-o", os.devnull, path], capture_output=True).returncode
    if status != 2:
        failures.append(f"the tool exits {status}, not 2, for the refused document: {name}")
for name, document in broken_documents:
    if validator.is_valid(document):
        failures.append(f"the schema accepts the broken document: {name}")
    path = os.path.join(work_dir, "schema-broken.json")
    with open(path, "w") as broken_file:
        json.dump(document, broken_file)
    status = subprocess.run([tool, "assets", path], capture_output=True).returncode
    if status != 1:
        failures.append(f"the tool exits {status}, not 1, for the broken document: {name}")

print("\n".join(failures) or f"{len(shipped)} documents valid, {len(broken_documents)} broken ones refused")
sys.exit(1 if failures else 0)
