"""The text form of a record, and what text and XML share: the words for a value."""

import ipaddress

BACKSLASH = 0x5C


def escaped(chars):
    """A text up to its terminator. The golden alphabet has no byte above 0x7f that could be part of a character."""
    result = ""
    for byte in chars.split(b"\0", 1)[0]:
        if byte == BACKSLASH:
            result += "\\\\"
        elif 0x20 <= byte < 0x7F:
            result += chr(byte)
        else:
            result += f"\\x{byte:02x}"
    return result


def word(kind, value):
    """A primitive value other than a text."""
    if kind == "ork_boolean":
        return "true" if value else "false"
    if kind == "ip_address":
        if value.family == 0:
            return "none"
        octets = value.octets[:4] if value.family == 4 else value.octets
        return f"{ipaddress.ip_address(octets)}/{value.prefix_length}"
    return str(value)


def set_flags(names, value):
    return [name for i, name in enumerate(names) if value >> i & 1]


class Text:
    def __init__(self, schema):
        self.schema = schema

    def record(self, name, instance, indent=0):
        blanks = " " * indent
        result = f"{blanks}{name}@{instance.record.name}: {{\n"
        for field in instance.record.fields:
            if field.variant > instance.variant:
                continue
            value = instance.values[field.name]
            if field.count:
                for i, element in enumerate(value):
                    result += self._field(f"{field.name}[{i}]"[:79], field, element, indent + 2)
            else:
                result += self._field(field.name, field, value, indent + 2)
        # A record of an older variant stays open.
        return result + f"{blanks}}}\n" if instance.variant >= instance.record.newest else result

    def _field(self, name, field, value, indent):
        kind = field.type
        blanks = " " * indent
        if kind in self.schema.records:
            return self.record(name, value, indent)
        if kind in self.schema.enums:
            return f"{blanks}{name}@{kind}:{self.schema.enums[kind][value]}\n"
        if kind in self.schema.flags:
            flags = "".join(flag + " " for flag in set_flags(self.schema.flags[kind], value))
            return f"{blanks}{name}@{kind}:{flags}\n"
        return f"{blanks}{name}: {escaped(value) if kind == 'char' else word(kind, value)}\n"
