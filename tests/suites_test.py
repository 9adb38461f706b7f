#!/usr/bin/env python3
"""Every test belongs to one entry of CTest, and every entry has tests."""

import json
import os
import re
import subprocess
import unittest
from fnmatch import fnmatchcase
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
PROGRAMS = os.environ["WAYFIND_TEST_PROGRAMS"].split(os.pathsep)


def command_of(entry):
    return entry.get("command", [""])


def filters_of(entry):
    """The patterns by which an entry chooses its tests; without any it runs all."""
    for argument in command_of(entry):
        if argument.startswith("--gtest_filter="):
            return argument.partition("=")[2].split(":")
    return ["*"]


def tests_of(program):
    """The full names of a program's tests, as it prints them: a line for each suite and an indented one for each test."""
    listing = subprocess.run([program, "--gtest_list_tests"], check=True, capture_output=True, text=True).stdout
    names, suite = [], ""
    for line in listing.splitlines():
        name = line.partition("  #")[0].rstrip()
        if name.startswith("  "):
            names.append(suite + name.strip())
        elif re.fullmatch(r"[\w/]+\.", name):
            suite = name
    return names


ENTRIES = json.loads(subprocess.run([os.environ["WAYFIND_CTEST"], "--show-only=json-v1"], check=True, capture_output=True,
                                    cwd=os.environ["WAYFIND_BUILD"]).stdout)["tests"]
TESTS = {program: tests_of(program) for program in PROGRAMS}


class Suites(unittest.TestCase):
    def test_no_two_entries_have_one_name(self):
        names = [entry["name"] for entry in ENTRIES]
        self.assertEqual(sorted(names), sorted(set(names)))

    def test_every_test_belongs_to_one_entry(self):
        for program, tests in TESTS.items():
            entries = [filters_of(entry) for entry in ENTRIES if command_of(entry)[0] == program]
            for test in tests:
                chosen = sum(any(fnmatchcase(test, pattern) for pattern in patterns) for patterns in entries)
                self.assertEqual(chosen, 1, f"{program}: {test}")

    def test_every_entry_of_a_program_has_tests(self):
        for entry in ENTRIES:
            for pattern in filters_of(entry) if command_of(entry)[0] in TESTS else []:
                self.assertTrue(any(fnmatchcase(test, pattern) for test in TESTS[command_of(entry)[0]]), entry["name"])

    @unittest.skipIf(os.environ["WAYFIND_SANITIZE"], "a sanitizer leaves out programs")
    def test_every_test_of_a_source_is_in_a_program(self):
        # As written: without the names of an instantiation and of its parameter.
        known = {re.sub(r"^(?:\w+/)?(\w+\.\w+).*$", r"\1", test) for tests in TESTS.values() for test in tests}
        written = 0
        for source in sorted([*ROOT.glob("tests/**/*.cpp"), *ROOT.glob("bench/*.cpp")]):
            for suite, test in re.findall(r"^TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)", source.read_text(), flags=re.M):
                written += 1
                self.assertTrue(f"{suite}.{test}" in known, f"{source.relative_to(ROOT)}: no program runs {suite}.{test}")
        self.assertGreater(written, 1000)


if __name__ == "__main__":
    unittest.main()
