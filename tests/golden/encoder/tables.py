"""The records, enums and the flag set, as far as the encoder has to know them."""

import pathlib
import sys
from dataclasses import dataclass, field

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2]))
from facts import facts  # noqa: E402

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
        self.records = {name: Record(name, [_field(f) for f in record.parts]) for name, record in facts().of_kind("record").items()}
        self.enums = {name: enum.parts for name, enum in facts().of_kind("enum").items()}
        self.flags = {name: flags.parts for name, flags in facts().of_kind("flags").items()}

    def counters(self, record):
        return {f.count for f in record.fields if f.count}

    def deepest_variant(self, record):
        """The highest variant number of a record and of all that it holds."""
        inner = [self.deepest_variant(self.records[f.type]) for f in record.fields if f.type in self.records]
        return max([record.newest, *inner])

    def holds_arrays(self, record):
        inner = (self.holds_arrays(self.records[f.type]) for f in record.fields if f.type in self.records)
        return bool(self.counters(record)) or any(inner)


def _field(told):
    return Field(told.name, told.type, told.width if told.type == "char" else 0, told.counter, told.variant)
