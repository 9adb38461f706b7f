"""The schema, and the values that tests send through two processes."""
import functools
import ipaddress
import os
import pathlib
import random
import sys
from xml.sax.saxutils import escape

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
from facts import facts  # noqa: E402

CL = "fwe_cl_wayfind_"

# Counts that the agent fills in: record, field, and the messages counted; none: all that may repeat in the show.
COUNTS = {name: {f.name: None if f.counts == "all" else f.counts for f in record.parts if f.counts}
          for name, record in facts().of_kind("record").items()}

# Subject by subject, the bundle that is shown.
SUBJECTS = {bundle.show: bundle.name for bundle in facts().bundles}


def kind_of(type_):
    for kind, word in (("enum", "enum"), ("flags", "flag set"), ("record", "record")):
        if type_ in facts().of_kind(kind):
            return word
    return type_


@functools.cache
def schema():
    """The tables by name, in plain lists and dictionaries."""
    def row(f):
        return {"name": f.name, "class": f.cls, "kind": kind_of(f.type), "type": f.type, "variant": f.variant, "width": f.width}
    return {
        "records": {name: {"luid": record.luid, "variants": len(record.variants), "fields": [row(f) for f in record.parts]}
                    for name, record in facts().of_kind("record").items()},
        "types": {name: type_.parts for kind in ("enum", "flags") for name, type_ in facts().of_kind(kind).items()},
        "messages": {name: {"luid": message.luid, "records": [record for record, _ in message.parts]}
                     for name, message in facts().of_kind("message").items()},
        # The request message that ends every table has no data.
        "bundles": {bundle.name: {"luids": bundle.luids, "members": bundle.members[:-1]} for bundle in facts().bundles},
    }


def record(name):
    return schema()["records"][name]


def number(bits, dice):
    return dice.choice([0, 1, (1 << bits) - 1, dice.getrandbits(bits), dice.getrandbits(bits), dice.getrandbits(bits)])


def text(width, dice):
    """At most width bytes; now and then exactly so many."""
    alphabet = "abcXYZ0189 _-.:/<>&\"'\\\u00e9"
    length = dice.choice([0, 1, width, width, dice.randrange(width + 1)])
    made = ""
    while len((made + "x").encode()) <= length:
        made += dice.choice(alphabet if len(made.encode()) + 2 <= length else "abcXYZ")
    return made


def address(dice):
    family = dice.randrange(5)
    if family == 0:
        return "none"
    if family < 3:
        return f"{ipaddress.IPv4Address(dice.getrandbits(32))}/{dice.randrange(33)}"
    return f"{ipaddress.IPv6Address(dice.getrandbits(128) | 1 << 127)}/{dice.randrange(129)}"


def one_value(field, dice):
    kind = field["kind"]
    if kind.startswith("u_int"):
        return str(number(int(kind[5:]), dice))
    if kind == "link_type":
        return str(number(32, dice))
    if kind == "ork_boolean":
        return dice.choice(["true", "false"])
    if kind == "ip_address":
        return address(dice)
    if kind == "char":
        return text(field["width"], dice)
    if kind == "enum":
        return [dice.choice(schema()["types"][field["type"]])]
    if kind == "flag set":
        return [flag for flag in schema()["types"][field["type"]] if dice.random() < 0.5]
    return values(field["type"], dice)


def values(name, dice):
    """Field by field a text, a list of empty elements, a dictionary, or in a list of one of these an array."""
    made = {}
    for field in record(name)["fields"]:
        if field["class"] == "counter":
            continue
        if field["class"].endswith("array"):
            made[field["name"]] = [one_value(field, dice) for _ in range(dice.randrange(4))]
        else:
            made[field["name"]] = one_value(field, dice)
    return made


def to_xml(name, made):
    """A record of values as a data file has it."""
    lines = []
    for field in record(name)["fields"]:
        if field["class"] == "counter":
            continue
        several = made[field["name"]] if field["class"].endswith("array") else [made[field["name"]]]
        for value in several:
            lines.append(f"<{field['name']}>{content(field, value)}</{field['name']}>\n")
    return "".join(lines)


def content(field, value):
    if isinstance(value, dict):
        return "\n" + to_xml(field["type"], value)
    if isinstance(value, list):
        return "".join(f"<{word}/>" for word in value)
    return escape(value.replace("\\", "\\\\"))


class Data:
    """Entries for every message: so many of those that may repeat, one of the others. The same seed gives the same entries.
    entries: a number, or by message a number."""

    def __init__(self, entries, seed=1, only=None):
        self.messages = {}
        repeatable = {member for bundle in schema()["bundles"].values() for member, many in bundle["members"] if many}
        for message, row in schema()["messages"].items():
            if only is not None and message not in only:
                self.messages[message] = []
                continue
            dice = random.Random(f"{seed} {message}")
            wanted = entries if isinstance(entries, int) else entries[message]
            several = wanted if message in repeatable else 1
            self.messages[message] = [[values(name, dice) for name in row["records"]] for _ in range(several)]

    def write(self, folder):
        for message, entries in self.messages.items():
            with open(os.path.join(folder, message + ".xml"), "w", encoding="utf-8") as file:
                file.write("<fwe_ui_wayfind>\n")
                for entry in entries:
                    for name, made in zip(schema()["messages"][message]["records"], entry):
                        file.write(f"<{name}>\n{to_xml(name, made)}</{name}>\n")
                file.write("</fwe_ui_wayfind>\n")

    def shown(self, bundle):
        """The (message, records) of a show, with its counts."""
        members = schema()["bundles"][bundle]["members"]
        total = sum(len(self.messages[member]) for member, many in members if many)
        for message, _ in members:
            for entry in self.messages[message]:
                yield message, [self.counted(name, made, total)
                                for name, made in zip(schema()["messages"][message]["records"], entry)]

    def counted(self, name, made, total):
        counts = {field: str(total if message is None else len(self.messages[message]))
                  for field, message in COUNTS.get(name, {}).items()}
        return {**made, **counts}
