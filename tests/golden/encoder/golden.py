#!/usr/bin/env python3
"""Writes the golden files of all records, or with --check compares them with what it would write.

One file for each record. A case is a release and a length for all arrays; it has the hash with two seeds, the text, and
with state tracking off and on the wire image and the XML.
"""

import argparse
import pathlib
import sys

from record_hash import Hash
from record_text import Text
from record_xml import Xml
from tables import Schema
from values import Filler
from wire_image import WireImage

SEEDS = (0, 0x9E3779B9)
LENGTHS = (0, 1, 3)


def hex_lines(data):
    for offset in range(0, len(data), 16):
        yield f"{offset:06x}  {data[offset:offset + 16].hex(' ')}\n"


def case(schema, record, release, length):
    instance = Filler(schema, release, length).instance(record, record.name)
    yield f"== release {release}, arrays of {length}\n"
    for seed in SEEDS:
        yield f"-- hash {seed:08x}: {Hash(schema).record(instance, seed):08x}\n"
    yield "-- text\n"
    yield Text(schema).record(record.name, instance)
    for tracking in (False, True):
        mode = "on" if tracking else "off"
        image = WireImage(schema, tracking).record(instance)
        yield f"-- wire, tracking {mode}, {len(image)} bytes\n"
        yield from hex_lines(image)
        yield f"-- xml, tracking {mode}\n"
        yield Xml(schema, tracking).record(record.name, instance)


def document(schema, record):
    lengths = LENGTHS if schema.holds_arrays(record) else LENGTHS[:1]
    pieces = []
    for release in range(schema.deepest_variant(record) + 1):
        for length in lengths:
            pieces += case(schema, record, release, length)
    return "".join(pieces)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true")
    arguments = parser.parse_args()
    schema = Schema()
    folder = pathlib.Path(__file__).resolve().parent.parent / "records"
    wanted = {f"{name}.golden": document(schema, record) for name, record in schema.records.items()}
    if not arguments.check:
        folder.mkdir(exist_ok=True)
        for name, text in wanted.items():
            (folder / name).write_text(text)
        return 0
    found = {path.name: path.read_text() for path in folder.glob("*.golden")}
    wrong = sorted(name for name in wanted.keys() | found.keys() if wanted.get(name) != found.get(name))
    for name in wrong:
        print(f"{name}: not what the encoder writes", file=sys.stderr)
    print(f"{len(wanted)} golden files, {len(wrong)} wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
