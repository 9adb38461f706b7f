"""What is under test, as the build hands it over in the environment, and the tables beside this file."""
import os
import pathlib
import subprocess
import tempfile

import elf

HERE = pathlib.Path(__file__).parent
LIBRARY = pathlib.Path(os.environ["WAYFIND_LIBRARY"])
GENERATED = pathlib.Path(os.environ["WAYFIND_GENERATED"])
LEDGER = HERE.parent.parent / "model" / "exports.txt"
SANITIZED = os.environ.get("WAYFIND_SANITIZE", "") != ""

built = elf.File(LIBRARY)


def stripped():
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / "stripped.so"
        subprocess.run(["strip", "-o", copy, LIBRARY], check=True)
        return elf.File(copy)


def rows(name):
    return [line.split("\t") for line in (HERE / name).read_text().splitlines()]


class Type:
    """A row of types.tsv, which stand in the order of registration: kind, name, LUID, definition, used+slop of each variant."""

    def __init__(self, kind, name, luid, definition, variants):
        self.kind, self.name, self.luid, self.definition = kind, name, luid, definition
        self.variants = [tuple(map(int, variant.split("+"))) for variant in variants.split()]

    def descriptor(self):
        return f"_{self.name}{'_message' if self.kind == 'message' else ''}_type_info_internal"


types = [Type(*row) for row in rows("types.tsv")]
