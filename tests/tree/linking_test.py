#!/usr/bin/env python3
"""Linking points one way, as including does: no object file of the library needs one of a layer above its own.

Usage: linking_test.py NM OBJECT...
"""

import subprocess
import sys
import unittest

# From the ground up. The generated tables hold data only; the generated exports are at the top and may need all.
LAYERS = [
    ("generated/source/descriptors.", "tables"),
    ("generated/source/sections.", "tables"),
    ("frame/", "frame"),
    ("encoders/", "encoders"),
    ("messages/", "messages"),
    ("generated/source/exports_", "exports"),
]
ORDER = ["tables", "frame", "encoders", "messages", "exports"]

NM, OBJECTS = sys.argv[1], sys.argv[2:]


def layer(path):
    inside = path.rsplit("/__/", 1)[-1]
    for prefix, label in LAYERS:
        if f"/{prefix}" in f"/{inside}":
            return label
    raise AssertionError(f"{path} is in no layer")


def symbols(path):
    """Names that an object defines for others, and names that it needs from others."""
    defined, needed = set(), set()
    listed = subprocess.run([NM, "--extern-only", "--format=posix", path], check=True, capture_output=True, text=True)
    for line in listed.stdout.splitlines():
        name, kind = line.split()[:2]
        if kind == "U":
            needed.add(name)
        elif kind not in "wv":  # those are needed, but not from anybody in particular
            defined.add(name)
    return defined, needed


class Linking(unittest.TestCase):
    def test_every_layer_is_there(self):
        self.assertEqual({layer(path) for path in OBJECTS}, set(ORDER))

    def test_points_one_way(self):
        found = {path: symbols(path) for path in OBJECTS}
        homes = {}
        for path, (defined, _) in found.items():
            for name in defined:
                # Inline functions stand in several objects: the lowest serves all.
                homes[name] = min(homes.get(name, "exports"), layer(path), key=ORDER.index)
        wrong = sorted(
            f"{layer(path)} needs {name} of {homes[name]} ({path.rsplit('/', 1)[-1]})"
            for path, (_, needed) in found.items()
            for name in needed
            if name in homes and ORDER.index(homes[name]) > ORDER.index(layer(path))
        )
        self.assertEqual(wrong, [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
