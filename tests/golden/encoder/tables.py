"""The records, enums and the flag set, read from schema.txt."""

import pathlib
import re
from dataclasses import dataclass, field

PRIMITIVES = ("u_int8", "u_int16", "u_int32", "u_int64", "ork_boolean", "ip_address", "link_type")


@dataclass(frozen=True)
class Field:
    name: str
    type: str  # of the value, or of an array's element; "char" for a text
    size: int  # of a text, bytes
    count: str  # the field that holds an array's length, else empty
    variant: int


@dataclass
class Record:
    name: str
    fields: list = field(default_factory=list)

    @property
    def newest(self):
        return max(f.variant for f in self.fields)


class Schema:
    def __init__(self):
        self.records = {}
        self.enums = {}
        self.flags = {}
        self._read(pathlib.Path(__file__).with_name("schema.txt"))

    def counters(self, record):
        return {f.count for f in record.fields if f.count}

    def deepest_variant(self, record):
        """The highest variant number of a record and of all that it holds."""
        inner = [self.deepest_variant(self.records[f.type]) for f in record.fields if f.type in self.records]
        return max([record.newest, *inner])

    def holds_arrays(self, record):
        inner = (self.holds_arrays(self.records[f.type]) for f in record.fields if f.type in self.records)
        return bool(self.counters(record)) or any(inner)

    def _read(self, path):
        lines = None
        for line in path.read_text().splitlines():
            if not line or line.startswith("#"):
                continue
            words = line.split()
            if line.startswith(" "):
                lines.append(_field(words) if len(words) == 3 else words[0])
                continue
            kind, name = words
            lines = []
            if kind == "record":
                self.records[name] = Record(name, lines)
            else:
                {"enum": self.enums, "flags": self.flags}[kind][name] = lines


def _field(words):
    name, type_text, variant = words
    match = re.fullmatch(r"(\w+?)(?:\*(\d+)|\[(\w+)\])?", type_text)
    return Field(name, match[1], int(match[2] or 0), match[3] or "", int(variant))
