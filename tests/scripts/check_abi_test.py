#!/usr/bin/env python3
"""The ABI check against two tiny libraries built now: a release that breaks a
binary built against the baseline fails unless its SONAME is new; additions pass."""
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
CHECK = ROOT / "scripts" / "check-abi.sh"
COMPILER = sys.argv[1] if len(sys.argv) > 1 else "c++"

HEADER = "struct Options { int a; %s };\n"
SOURCE = '#include "api.hpp"\n__attribute__((visibility("default"))) int %s(const Options& o) { return o.a; }\n%s'
ADDED = '__attribute__((visibility("default"))) int added() { return 0; }\n'


def library(directory: pathlib.Path, soname: str, member="", function="use", extra="") -> pathlib.Path:
    """libdemo built with debug information from the given variant of the interface."""
    include = directory / "include"
    include.mkdir(parents=True)
    (include / "api.hpp").write_text(HEADER % member)
    (directory / "api.cpp").write_text(SOURCE % (function, extra))
    output = directory / "libdemo.so"
    subprocess.run([COMPILER, "-g", "-shared", "-fPIC", "-fvisibility=hidden", f"-I{include}",
                    f"-Wl,-soname,{soname}", "-o", str(output), str(directory / "api.cpp")],
                   check=True)
    return output


class CheckAbiTest(unittest.TestCase):
    def test_breaks_fail_under_the_same_soname_and_pass_under_a_new_one(self):
        cases = [  # (what changed, SONAME, interface changes, whether the check passes)
            ("nothing", "libdemo.so.1", {}, True),
            ("a function added", "libdemo.so.1", {"extra": ADDED}, True),
            ("a member added", "libdemo.so.1", {"member": "long b;"}, False),
            ("a function removed", "libdemo.so.1", {"function": "renamed"}, False),
            ("a member added, new SONAME", "libdemo.so.2", {"member": "long b;"}, True),
        ]
        with tempfile.TemporaryDirectory() as tmp:
            released = library(pathlib.Path(tmp, "release"), "libdemo.so.1")
            baseline = pathlib.Path(tmp, "libdemo.so.1.abi")
            with baseline.open("w") as out:
                subprocess.run([str(CHECK), "--write-baseline", str(released),
                                str(released.parent / "include")], stdout=out, check=True)
            for name, soname, changes, passes in cases:
                with self.subTest(name):
                    directory = pathlib.Path(tmp, name.replace(" ", "-").replace(",", ""))
                    built = library(directory, soname, **changes)
                    result = subprocess.run([str(CHECK), str(baseline), str(built)],
                                            capture_output=True, text=True)
                    self.assertEqual(result.returncode == 0, passes, result.stdout + result.stderr)


if __name__ == "__main__":
    if not shutil.which("abidw") or not shutil.which("abidiff"):
        print("abigail-tools are not installed")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])
