#!/usr/bin/env python3
"""Writes the suites of a program of tests as entries of CTest.

    suites.py PROGRAM NAME FILE [PROPERTY VALUE]...

Entries are called NAME.file.suite, in snake_case. The file is left out where the program has no other, and the suite where
the file has no other or is called like it: behaviour.frame.value_array, behaviour.frame.variant.upgrade. What a suite calls
its death tests, ValueArrayDeathTest, runs with it.
"""

import json
import re
import subprocess
import sys
import tempfile
from collections import defaultdict
from pathlib import Path


def snake(name):
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name).lower()


def listed(program):
    """The suites of a program as {(file, suite): full names}, a full name being that of one instantiation."""
    with tempfile.NamedTemporaryFile(suffix=".json") as report:
        subprocess.run([program, "--gtest_list_tests", f"--gtest_output=json:{report.name}"],
                       check=True, stdout=subprocess.DEVNULL)
        suites = json.load(report)["testsuites"]
    found = defaultdict(list)
    for suite in suites:
        files = {Path(test["file"]).stem.removesuffix("_test") for test in suite["testsuite"]}
        if len(files) != 1:
            sys.exit(f"the suite {suite['name']} stands in several files, {', '.join(sorted(files))}: give each file its own")
        base = suite["name"].split("/")[-1].removesuffix("DeathTest")
        found[files.pop(), snake(base)].append(suite["name"])
    return found


def entries(program, name):
    """The entries of a program as {entry: filter of GoogleTest}."""
    suites = listed(program)
    files = [file for file, _ in suites]
    result = {}
    for (file, suite), full_names in suites.items():
        parts = [name]
        if len(set(files)) > 1:
            parts.append(file)
        if files.count(file) > 1 and suite != parts[-1].split(".")[-1]:
            parts.append(suite)
        result[".".join(parts)] = ":".join(f"{full}.*" for full in full_names)
    if len(result) != len(suites):
        sys.exit(f"{program}: two suites make the same entry: {sorted(suites)}")
    return result


def main(program, name, output, *properties):
    lines = []
    for entry, chosen in entries(program, name).items():
        lines.append(f"add_test([==[{entry}]==] [==[{program}]==] [==[--gtest_filter={chosen}]==])")
        lines.append(f"set_tests_properties([==[{entry}]==] PROPERTIES {' '.join(f'[==[{p}]==]' for p in properties)})")
    Path(output).write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
