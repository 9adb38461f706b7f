"""Comparing what a client printed as XML with what went in, field by field."""
import re

from schema import COUNTS, record, schema


def unescaped(text):
    return re.sub(r"\\(\\|x[0-9a-f]{2})", lambda m: "\\" if m[1] == "\\" else chr(int(m[1][1:], 16)), text)


class Comparison:
    """newest: the newest variant of any record that may come out; states: whether both processes track. Then what went through an accessor comes
    out as touched: elements, which a reader of XML sets one by one, and the counts that the agent sets. All else it reads straight into place."""

    def __init__(self, test, newest, states):
        self.test = test
        self.newest = newest
        self.states = states

    def bundle(self, root, name, expected):
        self.tag(root, name)
        messages = iter(root)
        for message, records in expected:
            element = next(messages, None)
            self.tag(element, message)
            self.test.assertEqual([child.tag for child in element], schema()["messages"][message]["records"])
            for child, made in zip(element, records):
                self.tag(child, child.tag)
                self.record(child, child.tag, made)
        self.test.assertIsNone(next(messages, None))

    def record(self, element, name, made):
        found = iter(element)
        for field in record(name)["fields"]:
            if field["variant"] > self.newest:
                continue
            if field["class"] == "counter":
                array = record(name)["fields"][record(name)["fields"].index(field) + 1]["name"]
                self.field(next(found, None), field, str(len(made[array])))
            elif field["class"].endswith("array"):
                for value in made[field["name"]]:
                    self.field(next(found, None), field, value, touched=True)
            else:
                self.field(next(found, None), field, made[field["name"]], touched=field["name"] in COUNTS.get(name, {}))
        extra = next(found, None)
        self.test.assertIsNone(extra, f"more in {name}: {extra.tag if extra is not None else ''}")

    def field(self, element, field, value, touched=False):
        self.tag(element, field["name"], touched)
        if isinstance(value, dict):
            self.record(element, field["type"], value)
        elif isinstance(value, list):
            self.test.assertEqual([(child.tag, child.attrib) for child in element], [(word, {}) for word in value], field["name"])
        else:
            shown = element.text or ""
            self.test.assertEqual(unescaped(shown) if field["kind"] == "char" else shown, value, field["name"])

    def tag(self, element, name, touched=False):
        self.test.assertIsNotNone(element, f"{name} is missing")
        self.test.assertEqual((element.tag, element.attrib), (name, {"state": "2"} if touched and self.states else {}))
