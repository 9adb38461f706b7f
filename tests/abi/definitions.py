#!/usr/bin/env python3
"""The ledger of definitions: what each type is made of, beside the definition hash that peers compare.

A row of model/definitions.txt is kind, name, definition hash, and for each variant how many fields it adds and a digest of
them: names, classes, kinds and widths, not meanings. An enum, a flag set and a message have one variant, of values, flags
and records. An embedded record stands for itself by its name, as its own row tells of its growth.

Usage: definitions.py check|update LIBRARY SCHEMA_JSON
"""
import hashlib
import json
import pathlib
import re
import subprocess
import sys

import elf

LEDGER = pathlib.Path(__file__).resolve().parents[2] / "model/definitions.txt"
COUNTED = ("enum", "flags")  # their last variant may gain values behind those that it has
UPDATE = "run: cmake --build --preset release --target update_definitions"


class Type:
    """variants: for each one what it adds, as a list of texts."""

    def __init__(self, kind, name, definition, variants):
        self.kind, self.name, self.definition, self.variants = kind, name, definition, variants

    def row(self):
        return f"{self.kind} {self.name} {self.definition} " + " ".join(f"{len(items)}:{digest(items)}" for items in self.variants)


def digest(items):
    return hashlib.sha256("\n".join(items).encode()).hexdigest()[:16]


def field_text(name, cls, kind, width):
    """Of a field, or an array's elements; kind is a primitive's name or a type's. The width of a record is none of its parent's."""
    return f"{name} {cls} {kind} {width or '-'}"


def by_variant(fields, variants):
    """Of (variant, text) pairs."""
    return [[text for variant, text in fields if variant == number] for number in range(variants)]


def definitions_of(file):
    """LUID to definition hash, out of the manifest."""
    return dict(re.findall(r"^([0-9a-f]{32}):([0-9a-f]{32})", file.sections[".manifest"].data.decode("latin1"), re.M))


def built_types(library, schema_json):
    """What a library says of itself."""
    file = elf.File(library)
    schema = json.loads(subprocess.check_output([schema_json]))
    definitions = definitions_of(file)

    def descriptor(symbol):
        """The definition hash, and the kind as the descriptor has it."""
        image = file.at(file.address_of(f"_{symbol}_type_info_internal"), 272)
        return definitions[image[4:20].hex()], image[181:245].rstrip(b"\0").decode()

    def text(f):
        return field_text(f["name"], f["class"].replace(" ", "_"), f["type"] or f["kind"], 0 if f["kind"] == "record" else f["width"])
    for name, record in schema["records"].items():
        yield Type("record", name, descriptor(name)[0], by_variant([(f["variant"], text(f)) for f in record["fields"]], record["variants"]))
    for name, values in schema["types"].items():
        definition, kind = descriptor(name)
        yield Type("flags" if kind == "flag" else kind, name, definition, [values])
    for name, message in schema["messages"].items():
        yield Type("message", name, descriptor(name + "_message")[0], [message["records"]])


def told_types(facts):
    """What the facts say of the same types."""
    records = facts.of_kind("record")

    def text(f):
        return field_text(f.name, f.cls, f.type, 0 if f.type in records else f.width)
    for told in facts.types:
        if told.kind == "record":
            variants = by_variant([(f.variant, text(f)) for f in told.parts], len(told.variants))
        else:
            variants = [[part[0] if told.kind == "message" else part for part in told.parts]]
        yield Type(told.kind, told.name, told.definition, variants)


def read_ledger(path=LEDGER):
    return {row.split()[1]: row for row in path.read_text().splitlines() if not row.startswith("#")}


def is_changed(entry, items, kind):
    """Whether what a ledger's entry for one variant lists is no longer what it was."""
    count, listed = entry.split(":")
    if kind in COUNTED:
        items = items[:int(count)]
    return f"{len(items)}:{digest(items)}" != f"{count}:{listed}"


def refusals(ledger, types):
    """Changes that no ledger may follow."""
    now = {type_.name: type_ for type_ in types}
    for name, row in ledger.items():
        kind, _, definition, *entries = row.split()
        if name not in now or now[name].kind != kind:
            yield f"{name}: the {kind} is gone; peers know it, and it stays"
            continue
        variants = now[name].variants
        broken = [number for number, entry in enumerate(entries) if number >= len(variants) or is_changed(entry, variants[number], kind)]
        for number in broken:
            yield f"{name}: variant {number} is not what it was; peers know it, so what is new goes behind it"
        if not broken and now[name].definition == definition and now[name].row() != row:
            yield f"{name}: has changed and its definition hash has not; give it a new one in its table"
    owners = {}
    for type_ in types:
        other = owners.setdefault(type_.definition, type_)
        if other is not type_:
            yield f"{type_.name}: has the definition hash of {other.name}"


def problems(ledger, types):
    """Why the ledger does not stand for these types; none when it does."""
    found = list(refusals(ledger, types))
    return found or [f"{type_.name}: the ledger is behind; {UPDATE}" for type_ in types if ledger.get(type_.name) != type_.row()]


def updated(ledger_text, types):
    """The text of the ledger for these types; its comment stays."""
    comment = [line for line in ledger_text.splitlines() if line.startswith("#")]
    return "".join(line + "\n" for line in comment + [type_.row() for type_ in types])


def main(what, library, schema_json):
    types = list(built_types(library, schema_json))
    ledger = read_ledger()
    found = list(refusals(ledger, types)) if what == "update" else problems(ledger, types)
    if found:
        sys.exit("\n".join(found))
    if what == "update":
        LEDGER.write_text(updated(LEDGER.read_text(), types))


if __name__ == "__main__":
    if len(sys.argv) != 4 or sys.argv[1] not in ("check", "update"):
        sys.exit(__doc__.strip().splitlines()[-1])
    main(*sys.argv[1:])
