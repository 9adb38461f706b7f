"""Comparing what a client printed as XML with what went in, field by field."""
import re

from schema import record, schema


def unescaped(text):
    return re.sub(r"\\(\\|x[0-9a-f]{2})", lambda m: "\\" if m[1] == "\\" else chr(int(m[1][1:], 16)), text)


class Comparison:
    """newest: the newest variant of any record that may come out; states: whether fields may carry them."""

    def __init__(self, test, newest, states):
        self.test = test
        self.newest = newest
        self.states = states

    def bundle(self, root, name, expected):
        self.test.assertEqual(root.tag, name)
        messages = iter(root)
        for message, records in expected:
            element = next(messages, None)
            self.test.assertIsNotNone(element, f"{message} is missing")
            self.test.assertEqual(element.tag, message)
            self.test.assertEqual([child.tag for child in element], schema()["messages"][message]["records"])
            for child, made in zip(element, records):
                self.record(child, child.tag, made)
        self.test.assertIsNone(next(messages, None))

    def record(self, element, name, made):
        found = iter(element)
        for field in record(name)["fields"]:
            if field["variant"] > self.newest:
                continue
            if field["class"] == "counter":
                array = record(name)["fields"][record(name)["fields"].index(field) + 1]["name"]
                self.text(next(found, None), field, str(len(made[array])))
            elif field["class"].endswith("array"):
                for value in made[field["name"]]:
                    self.field(next(found, None), field, value)
            else:
                self.field(next(found, None), field, made[field["name"]])
        extra = next(found, None)
        self.test.assertIsNone(extra, f"more in {name}: {extra.tag if extra is not None else ''}")

    def field(self, element, field, value):
        if isinstance(value, dict):
            self.tag(element, field)
            self.record(element, field["type"], value)
        elif isinstance(value, list):
            self.tag(element, field)
            self.test.assertEqual([child.tag for child in element], value, field["name"])
        else:
            self.text(element, field, value)

    def text(self, element, field, value):
        self.tag(element, field)
        shown = element.text or ""
        self.test.assertEqual(unescaped(shown) if field["kind"] == "char" else shown, value, field["name"])

    def tag(self, element, field):
        self.test.assertIsNotNone(element, f"{field['name']} is missing")
        self.test.assertEqual(element.tag, field["name"])
        if not self.states:
            self.test.assertEqual(element.attrib, {})
