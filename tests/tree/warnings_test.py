#!/usr/bin/env python3
"""WAYFIND_WERROR decides for every file of the build whether a warning is an error.

Configures the tree both ways and reads the compile commands.

Usage: warnings_test.py SCRATCH_FOLDER C_COMPILER CXX_COMPILER
"""

import json
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SCRATCH, C_COMPILER, CXX_COMPILER = Path(sys.argv[1]).resolve(), sys.argv[2], sys.argv[3]


def compiled(werror):
    """Each file that the build compiles, with its command."""
    folder = SCRATCH / werror
    done = subprocess.run(
        ["cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", f"-DWAYFIND_WERROR={werror}",
         f"-DCMAKE_C_COMPILER={C_COMPILER}", f"-DCMAKE_CXX_COMPILER={CXX_COMPILER}"],
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        raise AssertionError(done.stdout)
    commands = json.loads((folder / "compile_commands.json").read_text())
    # The assembler gives no warnings.
    return [(entry["file"], entry["command"].split()) for entry in commands if not entry["file"].endswith(".s")]


class Werror(unittest.TestCase):
    def test_off_means_off_everywhere(self):
        commands = compiled("OFF")
        self.assertGreater(len(commands), 100)
        self.assertEqual([file for file, words in commands if any("-Werror" in word for word in words)], [])

    def test_on_means_on_everywhere(self):
        self.assertEqual([file for file, words in compiled("ON") if "-Werror" not in words], [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
