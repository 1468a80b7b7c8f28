"""Checks the published device-profile schema against the shipped profiles.

Every example and test profile must validate, the schema must close every
object that names its members, and every member the schema declares must be
used by some shipped profile (the C++ tests check that the loader accepts them).
"""
import json
import pathlib
import sys

try:
    import jsonschema
except ImportError:
    print("python3-jsonschema is not installed")
    sys.exit(77)

root = pathlib.Path(sys.argv[1])
schema = json.loads((root / "docs/device-profile.schema.json").read_text())
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)

failures = []
declared, used = set(), set()


def walk_schema(node):
    if isinstance(node, dict):
        if "properties" in node:
            declared.update(node["properties"])
            if node.get("type") == "object" and node.get("additionalProperties", True) is not False:
                failures.append(f"schema object with {sorted(node['properties'])} is open")
        for value in node.values():
            walk_schema(value)
    elif isinstance(node, list):
        for value in node:
            walk_schema(value)


def walk_profile(node):
    if isinstance(node, dict):
        used.update(node)
        node = list(node.values())
    if isinstance(node, list):
        for value in node:
            walk_profile(value)


walk_schema(schema)
profiles = sorted((root / "examples/profiles").glob("*.json")) + sorted(
    (root / "tests/data/profiles").glob("*.json"))
if len(profiles) < 3:
    failures.append(f"only {len(profiles)} shipped profiles found")
for path in profiles:
    profile = json.loads(path.read_text())
    for error in validator.iter_errors(profile):
        failures.append(f"{path}: /{'/'.join(map(str, error.absolute_path))}: {error.message}")
    walk_profile(profile)
failures += [f"no shipped profile uses the member {name!r}" for name in sorted(declared - used)]

print("\n".join(failures) or f"{len(profiles)} profiles valid")
sys.exit(1 if failures else 0)
