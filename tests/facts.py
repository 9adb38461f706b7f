"""Reads facts.txt, which says what each line means."""
import functools
import pathlib
import re
from dataclasses import dataclass, field

PATH = pathlib.Path(__file__).with_name("facts.txt")


@dataclass
class Field:
    name: str
    cls: str
    type: str  # of the value, or of an array's elements
    counter: str  # the field that holds an array's length, else empty
    variant: int
    number: int
    offset: int
    width: int
    state: int | None
    nested: int | None
    counts: str  # a message, "all", or empty


@dataclass
class Type:
    """A record, an enum, the flag set or a message; parts: fields, values, or (record, tag) pairs."""
    kind: str
    name: str
    luid: str = ""
    definition: str = ""
    variants: list = field(default_factory=list)  # a dictionary of numbers for each
    parts: list = field(default_factory=list)


@dataclass
class Bundle:
    name: str
    show: str = ""
    luids: list = field(default_factory=list)  # start, abort, commit
    members: list = field(default_factory=list)  # (message, whether it is repeatable)


@dataclass
class Traces:
    section: int
    luid: str = ""
    entries: int = 0


@dataclass
class Facts:
    types: list = field(default_factory=list)  # in the order of registration
    bundles: list = field(default_factory=list)
    traces: list = field(default_factory=list)

    def of_kind(self, kind):
        return {type_.name: type_ for type_ in self.types if type_.kind == kind}


def _number(word):
    return None if word == "-" else int(word)


def _field(words):
    name, cls, type_, *numbers = words
    element, counter = re.fullmatch(r"(\w+)(?:\[(\w+)\])?", type_).groups()
    counts = ""
    if len(numbers) == 8 and numbers[6] == "counts":
        counts = numbers[7]
    elif len(numbers) != 6:
        raise ValueError("a field has 9 columns")
    return Field(name, cls, element, counter or "", *map(_number, numbers[:6]), counts)


def _add(facts, last, words):
    """Takes one line; gives what the lines behind it belong to."""
    match words:
        case ["record" | "enum" | "flags" | "message" as kind, name]:
            last = Type(kind, name)
            facts.types.append(last)
        case ["bundle", name]:
            last = Bundle(name)
            facts.bundles.append(last)
        case ["traces", section]:
            last = Traces(int(section))
            facts.traces.append(last)
        case ["luid" | "definition" | "show" as what, word]:
            setattr(last, what, word)
        case ["entries", number]:
            last.entries = int(number)
        case ["variant", number, *numbers] if int(number) == len(last.variants):
            last.variants.append(dict(zip(numbers[::2], map(int, numbers[1::2]))))
        case ["field", *columns]:
            last.parts.append(_field(columns))
        case ["value", number, name] if int(number) == len(last.parts):
            last.parts.append(name)
        case ["carries", record, "tag", tag]:
            last.parts.append((record, int(tag, 16)))
        case ["start" | "abort" | "commit" as what, luid] if ["start", "abort", "commit"][len(last.luids)] == what:
            last.luids.append(luid)
        case ["member", message, "repeatable" | "once" as how]:
            last.members.append((message, how == "repeatable"))
        case _:
            raise ValueError("a line that means nothing")
    return last


@functools.cache
def facts():
    read, last = Facts(), None
    for number, line in enumerate(PATH.read_text().splitlines(), 1):
        words = line.split()
        if not words or words[0].startswith("#"):
            continue
        try:
            last = _add(read, last, words)
        except (ValueError, AttributeError, IndexError) as error:
            raise ValueError(f"{PATH}:{number}: {error}") from error
    return read
