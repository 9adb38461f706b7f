"""The wire image of a record. Everything is in network byte order."""

import struct

FORMATS = {"u_int8": ">B", "u_int16": ">H", "u_int32": ">I", "u_int64": ">Q", "ork_boolean": ">B"}
STATE_TRACKED = 0x08


class WireImage:
    def __init__(self, schema, tracking):
        self.schema = schema
        self.tracking = tracking

    def record(self, instance):
        body = b"".join(self._fields(instance)) if instance.variant >= 0 else b""
        flags = STATE_TRACKED if self.tracking else 0
        # The jump counts itself and all that follows.
        return struct.pack(">bBI", instance.variant, flags, 4 + len(body)) + body

    def _fields(self, instance):
        counters = self.schema.counters(instance.record)
        for field in instance.record.fields:
            if field.variant > instance.variant:
                continue
            value = instance.values[field.name]
            state = instance.states.get(field.name)
            if field.count:
                yield b"".join(self._value(field, element) for element in value)
                if value:
                    yield self._states([state[0], *state[1]])
            else:
                yield self._value(field, value)
                if field.name not in counters:
                    yield self._states([state])

    def _states(self, states):
        return bytes(states) if self.tracking else b""

    def _value(self, field, value):
        kind = field.type
        if kind in self.schema.records:
            return self.record(value)
        if kind in self.schema.enums or kind == "link_type":
            return struct.pack(">bI", 0, value)
        if kind in self.schema.flags:
            return struct.pack(">bIB", 0, 5, value)
        if kind == "char":
            return value
        if kind == "ip_address":
            return bytes([value.family, value.prefix_length]) + value.octets
        return struct.pack(FORMATS[kind], value)
