#!/usr/bin/env python3
"""Writes the golden frames of all messages and control messages, or with --check compares them with what it would write.

One file for each message, its records filled as those of the record files are, and one for each bundle.
"""

import argparse
import pathlib
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "encoder"))

from golden import hex_lines  # noqa: E402
from tables import Schema, facts  # noqa: E402
from values import Filler  # noqa: E402
from wire_image import WireImage  # noqa: E402

SEQUENCE = 0x01020304
ELEMENTS = 2  # of every array
KINDS = ("start", "abort", "commit")


def frame(luid, tracked, records=b""):
    """A header of 27 bytes, the identifier, and then the records."""
    length = 27 + 16 + len(records)
    header = struct.pack(">B6sBII11x", 0xBC, b"\xff" * 6, tracked, SEQUENCE, length)
    return header + bytes.fromhex(luid) + records


def section(title, data):
    yield f"== {title}, {len(data)} bytes\n"
    yield from hex_lines(data)


def message_file(schema, luid, records):
    filler = Filler(schema, schema_newest(schema), ELEMENTS)
    for tracking in (False, True):
        image = WireImage(schema, tracking)
        body = b"".join(image.record(filler.instance(schema.records[name], name)) for name in records)
        yield from section("tracking " + ("on" if tracking else "off"), frame(luid, tracking, body))


def bundle_file(luids):
    for kind, luid in zip(KINDS, luids):
        yield from section(kind, frame(luid, False))


def schema_newest(schema):
    return max(record.newest for record in schema.records.values())


def wanted():
    schema = Schema()
    files = {name: "".join(message_file(schema, message.luid, [record for record, _ in message.parts]))
             for name, message in facts().of_kind("message").items()}
    files.update({bundle.name: "".join(bundle_file(bundle.luids)) for bundle in facts().bundles})
    return {f"{name}.golden": text for name, text in files.items()}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true")
    arguments = parser.parse_args()
    files = wanted()
    if not arguments.check:
        for name, text in files.items():
            (HERE / name).write_text(text)
        return 0
    found = {path.name: path.read_text() for path in HERE.glob("*.golden")}
    wrong = sorted(name for name in files.keys() | found.keys() if files.get(name) != found.get(name))
    for name in wrong:
        print(f"{name}: not what the encoder writes", file=sys.stderr)
    print(f"{len(files)} golden files, {len(wrong)} wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
