#!/usr/bin/env python3
"""The layer check passes on the library's own sources and fails on each kind of bad edge."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
CHECK = ROOT / "scripts" / "check-layers.py"


def run(src: pathlib.Path) -> subprocess.CompletedProcess:
    return subprocess.run([sys.executable, str(CHECK), str(src)], capture_output=True, text=True)


class CheckLayersTest(unittest.TestCase):
    def test_the_library_points_only_down(self):
        result = run(ROOT / "src")
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_each_bad_edge_is_reported_with_its_place(self):
        cases = [  # (file, its include, whether the edge is allowed)
            ("service/A.cpp", "net/B.hpp", True),
            ("net/A.cpp", "collection/B.hpp", True),
            ("extractors/A.cpp", "dataset/B.hpp", True),
            ("platform/linux/A.cpp", "os/B.hpp", True),
            ("dataset/A.hpp", "extractors/B.hpp", False),     # up
            ("net/A.cpp", "service/B.hpp", False),            # up
            ("collection/A.cpp", "net/B.hpp", False),         # up
            ("platform/linux/A.cpp", "platform/profile/B.hpp", False),  # sideways
            ("platform/profile/A.cpp", "dataset/B.hpp", False),  # a platform into the core
            ("codec/A.cpp", "generator/B.hpp", False),        # a folder outside the layers
            ("tools/A.cpp", "codec/B.hpp", False),            # a folder without a place
        ]
        for file, include, ok in cases:
            with self.subTest(file=file, include=include), tempfile.TemporaryDirectory() as tmp:
                path = pathlib.Path(tmp, file)
                path.parent.mkdir(parents=True)
                path.write_text(f'#include <tavrin/error.hpp>\n#include "{include}"\n')
                result = run(pathlib.Path(tmp))
                self.assertEqual(result.returncode == 0, ok, result.stderr)
                if not ok:
                    self.assertIn(file, result.stderr)


if __name__ == "__main__":
    unittest.main()
