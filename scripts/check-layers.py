#!/usr/bin/env python3
"""Fails when a source of the library includes a folder that is not below its own.

The folders of src/ form layers (docs/architecture.md). A file may include its
own folder and any folder of a lower layer; the platform implementations may
include only their own folder and the operating-system seams they implement.
Public headers (<tavrin/...>) may be included from anywhere. Any other include
of a project folder is reported, and so is a folder the check does not know,
so that a new folder has to be given its place.
"""
import argparse
import pathlib
import re
import sys

# From the bottom up.
LAYERS = ["os", "codec", "dataset", "extractors", "collection", "net", "service", "capi"]
PLATFORMS = {"platform/linux", "platform/profile"}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def folder_of(relative: pathlib.PurePosixPath) -> str:
    parts = relative.parts
    if parts[0] == "platform" and len(parts) > 2:
        return "/".join(parts[:2])
    return parts[0] if len(parts) > 1 else ""


def allowed(source: str, target: str) -> bool:
    if source == target:
        return True
    if source in PLATFORMS:
        return target == "os"
    # The C interface makes a host's platform out of the device profile's stores.
    if source == "capi" and target == "platform/profile":
        return True
    if source in LAYERS and target in LAYERS:
        return LAYERS.index(target) < LAYERS.index(source)
    return False


def violations(src: pathlib.Path):
    for path in sorted(src.rglob("*")):
        if path.suffix not in {".cpp", ".hpp", ".h", ".c"}:
            continue
        relative = pathlib.PurePosixPath(path.relative_to(src).as_posix())
        source = folder_of(relative)
        if source not in LAYERS and source not in PLATFORMS:
            yield f"{relative}: the folder '{source}' has no place among the layers"
            continue
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            target = folder_of(pathlib.PurePosixPath(match.group(1)))
            if not allowed(source, target):
                yield f"{relative}:{number}: {source} includes \"{match.group(1)}\" of '{target or '?'}', which is not below it"


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("src", nargs="?", default=pathlib.Path(__file__).resolve().parent.parent / "src",
                        type=pathlib.Path, help="the folder of the library's sources (default: src/)")
    found = list(violations(parser.parse_args().src))
    for line in found:
        print(line, file=sys.stderr)
    if found:
        print(f"{len(found)} include(s) against the layers of docs/architecture.md", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
