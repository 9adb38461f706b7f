#!/usr/bin/env python3
"""What holds for the source tree itself: who may include whom, who may name a type.

Run from anywhere; one unittest method per rule.
"""

import re
import shutil
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SKIPPED_FOLDERS = {".git", "build", "__pycache__"}


def walk(folder=ROOT):
    for path in sorted(folder.iterdir()):
        if path.is_dir() and not path.is_symlink():
            if path.name not in SKIPPED_FOLDERS:
                yield from walk(path)
        elif path.is_file():
            yield path


FILES = {path.relative_to(ROOT).as_posix(): path for path in walk()}
CODE = [name for name in FILES if name.endswith((".h", ".cpp", ".c"))]
ENGINES = ("frame/", "encoders/", "messages/")


def text(name):
    return FILES[name].read_text(encoding="utf-8")


# Layers. A file belongs to the first prefix that fits, and may include its own layer and those named behind it.
TABLES = ["tables"]
ENGINE_GROUND = TABLES + ["ork"]
PUBLIC = ["ork", "set-up", "generated headers", "schema", "support"]
LAYERS = [
    ("include/ork/platform.h", "set-up", ["ork"]),
    ("include/ork/", "ork", []),
    ("model/exports.h", "exports", ["messages", "encoders", "frame"] + ENGINE_GROUND),
    ("generator/", "generator", TABLES),
    ("model/", "tables", []),
    ("frame/", "frame", ENGINE_GROUND),
    ("encoders/", "encoders", ["frame"] + ENGINE_GROUND),
    ("messages/", "messages", ["encoders", "frame"] + ENGINE_GROUND),
    ("platform/", "platform", ["ork", "set-up"]),
    ("tools/schema/", "schema", ["ork", "set-up", "generated headers"]),
    ("tools/common/", "tools", PUBLIC),
    ("tools/look/", "look", PUBLIC + ["tools"]),
    ("tools/offline/", "offline tools", PUBLIC + ["tools"]),
    ("tools/wayfind/main.cpp", "command", PUBLIC + ["tools", "offline tools", "ends"]),
    ("tools/wayfind/", "ends", PUBLIC + ["tools", "look"]),
    ("tests/support/", "support", PUBLIC),
    ("tests/platform/", "tests", PUBLIC + ["platform"]),
    ("tests/abi/", "tests", PUBLIC + ["tools", "offline tools"]),
    ("tests/look/", "tests", PUBLIC + ["look"]),
    ("tests/tree/wrong_rows/", "tests", TABLES),
    ("tests/", "tests", PUBLIC),
    ("bench/", "bench", PUBLIC + ["look"]),
    ("fuzz/", "fuzz", PUBLIC + ["tools", "offline tools"]),
    ("fwe_ui_wayfind/", "generated headers", ["ork"]),
]


def layer(name):
    for prefix, label, allowed in LAYERS:
        if name.startswith(prefix):
            return label, [label] + allowed
    raise AssertionError(f"{name} is in no layer")


def included(name):
    """Each file that a file includes in quotes, as a path from the root."""
    for target in re.findall(r'^\s*#\s*include\s+"([^"]+)"', text(name), flags=re.M):
        beside = (FILES[name].parent / target).resolve()
        if beside.is_file() and beside.is_relative_to(ROOT):
            yield beside.relative_to(ROOT).as_posix()
        elif target in FILES or target.startswith("fwe_ui_wayfind/"):
            yield target
        elif "include/" + target in FILES:
            yield "include/" + target
        else:
            # Found through an include folder of the target's own, as tests do with their support.
            matches = [file for file in FILES if file.endswith("/" + target)]
            yield matches[0] if len(matches) == 1 else target


class Includes(unittest.TestCase):
    def test_point_one_way(self):
        wrong = []
        for name in CODE:
            _, allowed = layer(name)
            for target in included(name):
                if layer(target)[0] not in allowed:
                    wrong.append(f"{name} includes {target}")
        self.assertEqual(wrong, [])

    def test_modules_know_nothing_of_set_up(self):
        wrong = [n for n in CODE if n.startswith(ENGINES + ("model/",)) and "include/ork/platform.h" in included(n)]
        self.assertEqual(wrong, [])

    def test_headers_include_in_no_circle(self):
        open_names, done = [], set()

        def visit(name):
            if name in open_names:
                self.fail(" -> ".join(open_names[open_names.index(name) :] + [name]))
            if name in done or name not in FILES:
                return
            open_names.append(name)
            for target in included(name):
                visit(target)
            open_names.pop()
            done.add(name)

        for name in CODE:
            visit(name)

    def test_engines_need_only_the_standard_library(self):
        allowed = {"alloca.h", "algorithm", "array", "cerrno", "cstddef", "cstdint", "cstdio", "cstdlib", "cstring",
                   "initializer_list", "utility"}
        wrong = []
        for name in CODE:
            if name.startswith(ENGINES + ("model/",)):
                used = re.findall(r"^\s*#\s*include\s+<([^>]+)>", text(name), flags=re.M)
                wrong += [f"{name} includes <{header}>" for header in used if header not in allowed]
        self.assertEqual(wrong, [])


class Names(unittest.TestCase):
    # Tables name types, users of the library name them; engines, platform and generator get rows as arguments.
    NAMELESS = ENGINES + ("model/", "generator/", "platform/", "include/", "tools/schema/")

    def test_types_are_named_in_tables_and_by_users_only(self):
        wrong = []
        for name in FILES:
            if not name.startswith(self.NAMELESS) or name.startswith("model/subjects/") or name.endswith(".txt"):
                continue
            for number, line in enumerate(text(name).split("\n"), 1):
                if re.search(r"\bfwe_(cl|dp|pal)_", line):
                    wrong.append(f"{name}:{number}: {line.strip()}")
        self.assertEqual(wrong, [])


class Sizes(unittest.TestCase):
    def test_no_engine_file_is_long(self):
        limit = 400
        watched = ENGINES + ("model/", "generator/", "platform/", "tools/", "bench/", "fuzz/")
        long = [f"{name}: {n}" for name in CODE if name.startswith(watched) and (n := text(name).count("\n")) > limit]
        self.assertEqual(long, [])

    def test_no_line_of_a_table_is_wide(self):
        limit = 100
        wide = [f"{name}:{number}: {len(line)}" for name in CODE if name.startswith("model/subjects/")
                for number, line in enumerate(text(name).split("\n"), 1) if len(line) > limit]
        self.assertEqual(wide, [])


class Scripts(unittest.TestCase):
    def scripts(self):
        for name, path in FILES.items():
            with path.open("rb") as file:
                head = file.readline(80)
            if re.match(rb"#!.*\b(?:ba)?sh\b", head):
                yield name, path

    def test_parse(self):
        for name, path in self.scripts():
            with self.subTest(name):
                subprocess.run(["bash", "-n", path], check=True)

    @unittest.skipUnless(shutil.which("shellcheck"), "needs shellcheck")
    def test_pass_shellcheck(self):
        for name, path in self.scripts():
            with self.subTest(name):
                done = subprocess.run(["shellcheck", "-x", path], cwd=ROOT, capture_output=True, text=True)
                self.assertEqual(done.returncode, 0, done.stdout)

    def test_are_executable(self):
        self.assertEqual([name for name, path in self.scripts() if not path.stat().st_mode & 0o100], [])


class Places(unittest.TestCase):
    def test_no_file_names_a_path_of_one_machine(self):
        machine = re.compile(rb"(?<![\w.}~$*-])/(?:home|root|work|Users|mnt|srv)/\w")
        wrong = []
        for name, path in FILES.items():
            for number, line in enumerate(path.read_bytes().split(b"\n"), 1):
                if machine.search(line):
                    wrong.append(f"{name}:{number}")
        self.assertEqual(wrong, [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
