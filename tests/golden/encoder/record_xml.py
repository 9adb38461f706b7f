"""The XML form of a record."""

from record_text import escaped, set_flags, word

ENTITIES = {"&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;"}


def start(name, state=0):
    return f'<{name} state="{state}">' if state else f"<{name}>"


class Xml:
    def __init__(self, schema, tracking):
        self.schema = schema
        self.tracking = tracking

    def record(self, name, instance, state=0):
        result = start(name, state) + "\n"
        counters = self.schema.counters(instance.record)
        for field in instance.record.fields:
            if field.variant > instance.variant:
                continue
            value = instance.values[field.name]
            if field.count:
                for element, state in zip(value, instance.states[field.name][1]):
                    result += self._field(field, element, state)
            else:
                state = 0 if field.name in counters else instance.states[field.name]
                result += self._field(field, value, state)
        return result + f"</{name}>\n"

    def _field(self, field, value, state):
        kind = field.type
        name = field.name
        state = state if self.tracking else 0
        if kind in self.schema.records:
            return self.record(name, value, state)
        if kind in self.schema.enums:
            return f"<{name}>\n<{self.schema.enums[kind][value]}/></{name}>\n"
        if kind in self.schema.flags:
            flags = "".join(f"<{flag}/>" for flag in set_flags(self.schema.flags[kind], value))
            return f"<{name}>\n{flags}</{name}>\n"
        if kind == "char":
            content = "".join(ENTITIES.get(char, char) for char in escaped(value))
        else:
            content = word(kind, value)
        return f"{start(name, state)}{content}</{name}>\n"
