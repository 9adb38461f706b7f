"""The hash of a record: SuperFastHash over each field in turn, the result of one the seed of the next."""

import struct

MASK = 2**32 - 1
FORMATS = {"u_int8": "<B", "u_int16": "<H", "u_int32": "<I", "u_int64": "<Q", "ork_boolean": "<I", "link_type": "<I"}


def super_fast_hash(data, seed):
    if not data:
        return seed
    value = seed
    whole = len(data) & ~3
    for low, high in struct.iter_unpack("<HH", data[:whole]):
        value = value + low & MASK
        value = (value << 16 ^ high << 11 ^ value) & MASK
        value = value + (value >> 11) & MASK
    rest = data[whole:]
    if len(rest) == 3:
        value = value + int.from_bytes(rest[:2], "little") & MASK
        value ^= value << 16 & MASK
        value ^= int.from_bytes(rest[2:], "little", signed=True) << 18 & MASK
        value = value + (value >> 11) & MASK
    elif len(rest) == 2:
        value = value + int.from_bytes(rest, "little") & MASK
        value ^= value << 11 & MASK
        value = value + (value >> 17) & MASK
    elif len(rest) == 1:
        value = value + int.from_bytes(rest, "little", signed=True) & MASK
        value ^= value << 10 & MASK
        value = value + (value >> 1) & MASK
    for left, right in ((3, 5), (4, 17), (25, 6)):
        value ^= value << left & MASK
        value = value + (value >> right) & MASK
    return value


class Hash:
    def __init__(self, schema):
        self.schema = schema

    def record(self, instance, seed):
        counts = {field.name: field.type for field in instance.record.fields}
        for field in instance.record.fields:
            value = instance.values[field.name]
            if not field.count:
                seed = self._value(field, value, seed)
                continue
            # The length goes in a second time.
            seed = super_fast_hash(struct.pack(FORMATS[counts[field.count]], len(value)), seed)
            if field.type in self.schema.records:
                for element in value:
                    seed = self.record(element, seed)
            else:
                width = FORMATS[field.type]
                seed = super_fast_hash(b"".join(struct.pack(width, element) for element in value), seed)
        return seed

    def _value(self, field, value, seed):
        kind = field.type
        if kind in self.schema.records:
            return self.record(value, seed)
        if kind in self.schema.enums:
            data = struct.pack("<I", value)
        elif kind in self.schema.flags:
            data = bytes([value])
        elif kind == "char":
            data = value
        elif kind == "ip_address":
            data = bytes([value.family, value.prefix_length]) + value.octets
        else:
            data = struct.pack(FORMATS[kind], value)
        return super_fast_hash(data, seed)
