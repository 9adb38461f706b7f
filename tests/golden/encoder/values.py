"""The values that golden records are filled with.

Every value follows from the path of its field alone: the record's name, then field names with slashes between them, an
element with its index, as "fwe_cl_wayfind_channel_data/chan/path/path_id[0]". The C++ side has the same rule.
"""

from dataclasses import dataclass

MASK = 2**64 - 1

# Letters, markup, the escape character, and two bytes that are no text.
ALPHABET = b"abcdefghijklmnopqrstuvwxyz0123456789-_.: <>&\"'\\\x07\xff"


def hash_of(path):
    """FNV-1a, 64 bits."""
    value = 0xCBF29CE484222325
    for byte in path.encode():
        value = (value ^ byte) * 0x100000001B3 & MASK
    return value


def bytes_of(path, length):
    """Pseudo-random bytes that begin from the path's hash."""
    state = hash_of(path)
    result = bytearray()
    for _ in range(length):
        state = (state * 6364136223846793005 + 1442695040888963407) & MASK
        result.append(state >> 56)
    return bytes(result)


def state_of(path):
    """A state byte; one in four is 0."""
    value = hash_of(path + "#state")
    return value >> 8 & 0xFF if value % 4 else 0


@dataclass
class Address:
    family: int
    prefix_length: int
    octets: bytes  # 16


@dataclass
class Instance:
    """A filled record. Fields of later variants hold zero, and arrays of them nothing."""

    record: object
    variant: int
    values: dict  # by field name; of an array, a list
    states: dict  # by field name; of an array, a pair of the whole byte and a list


def number(path, bits):
    return hash_of(path) & (1 << bits) - 1


def text(path, size):
    length = hash_of(path) % (size + 1)
    return bytes(ALPHABET[byte % len(ALPHABET)] for byte in bytes_of(path, length)).ljust(size, b"\0")


def address(path):
    value = hash_of(path)
    family = (0, 4, 6)[value % 3]
    octets = bytearray(bytes_of(path, 16))
    if family == 0:
        return Address(0, 0, bytes(16))
    if family == 4:
        return Address(4, (value >> 8) % 33, bytes(octets[:4]) + bytes(12))
    if value >> 16 & 1:
        octets[4:12] = bytes(8)
    return Address(6, (value >> 8) % 129, bytes(octets))


class Filler:
    """Fills records of a release: each type at the variant of that number, or at its newest if that is lower."""

    def __init__(self, schema, release, elements):
        self.schema = schema
        self.release = release
        self.elements = elements  # of every array

    def instance(self, record, path):
        variant = min(record.newest, self.release)
        result = Instance(record, variant, {}, {})
        counters = self.schema.counters(record)
        for field in record.fields:
            name = field.name
            inner = f"{path}/{name}"
            present = field.variant <= variant
            if field.count:
                count = self.elements if present else 0
                elements = [f"{inner}[{i}]" for i in range(count)]
                result.values[field.count] = count
                result.values[name] = [self.value(field, element) for element in elements]
                result.states[name] = (state_of(inner), [state_of(element) for element in elements])
            elif name not in counters:
                result.values[name] = self.value(field, inner) if present else self.zero(field)
                result.states[name] = state_of(inner) if present else 0
        return result

    def value(self, field, path):
        kind = field.type
        if kind in self.schema.records:
            return self.instance(self.schema.records[kind], path)
        if kind in self.schema.enums:
            return hash_of(path) % len(self.schema.enums[kind])
        if kind in self.schema.flags:
            return number(path, len(self.schema.flags[kind]))
        if kind == "char":
            return text(path, field.size)
        if kind == "ip_address":
            return address(path)
        return number(path, {"u_int8": 8, "u_int16": 16, "u_int32": 32, "u_int64": 64, "ork_boolean": 1, "link_type": 32}[kind])

    def zero(self, field):
        kind = field.type
        if kind in self.schema.records:
            return self.empty(self.schema.records[kind])
        if kind == "char":
            return bytes(field.size)
        if kind == "ip_address":
            return Address(0, 0, bytes(16))
        return 0

    def empty(self, record):
        """A record that nobody wrote to."""
        result = Instance(record, min(record.newest, self.release), {}, {})
        for field in record.fields:
            result.values[field.name] = [] if field.count else self.zero(field)
            result.states[field.name] = (0, []) if field.count else 0
        return result
