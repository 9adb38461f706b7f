"""What is under test, as the build hands it over in the environment, and what the facts say of its types."""
import os
import pathlib
import subprocess
import sys
import tempfile

import elf

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
from facts import facts  # noqa: E402

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
    """kind as the descriptor has it; used and slop of each variant."""

    def __init__(self, told):
        self.kind = {"record": "type", "flags": "flag"}.get(told.kind, told.kind)
        self.name, self.luid, self.definition = told.name, told.luid, told.definition
        self.variants = [(variant["used"], variant["slop"]) for variant in told.variants]

    def descriptor(self):
        return f"_{self.name}{'_message' if self.kind == 'message' else ''}_type_info_internal"


types = [Type(told) for told in facts().types]
controls = [(f"{bundle.name}_bundle_{kind}", luid) for bundle in facts().bundles for kind, luid in zip(("start", "abort", "commit"), bundle.luids)]
