"""The examples of docs/command.md, run as they stand there, against an agent on data/."""
import os
import pathlib
import re
import subprocess

from product import PATIENCE, TREE, WAYFIND, Case
from watch_test import Changing

PAGE = TREE / "docs/command.md"


def examples():
    """The commands of the indented blocks, each with the lines below it."""
    found = []
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        if line.startswith("    $ "):
            found.append((line[6:], []))
        elif line.startswith("    ") and found:
            if found[-1][1] is not None:
                found[-1][1].append(line[4:])
        elif line and found and not line.startswith("    "):
            found.append((None, None))
    return [(command, output) for command, output in found if command is not None]


def pattern(lines):
    """What the lines stand for: one of dots for any number of lines, dots at the end of one for its rest."""
    text = ""
    for line in lines:
        if line.strip() == "...":
            text += "(?:.*\n)*?"
        elif line.endswith("..."):
            text += re.escape(line[:-3]) + ".*\n"
        else:
            text += re.escape(line) + "\n"
    return text


class CommandPage(Case):
    def run_example(self, command):
        path = str(pathlib.Path(WAYFIND).parent) + os.pathsep + os.environ["PATH"]
        environment = {**os.environ, "PATH": path, "WAYFIND_SOCKET": str(self.socket)}
        return subprocess.run(["bash", "-c", command], cwd=self.folder, env=environment, text=True, timeout=PATIENCE, check=False,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout

    def test_shows_what_the_command_does(self):
        self.start_agent()
        found = [(command, output) for command, output in examples() if "--watch" not in command]
        self.assertGreater(len(found), 15)
        for command, output in found:
            with self.subTest(command):
                told = self.run_example(command)
                told = "".join(line.rstrip(" \r\n") + "\n" for line in told.splitlines())
                self.assertRegex(told, r"\A" + pattern(output) + r"\Z")


class CommandPageWatch(Changing):
    @staticmethod
    def timeless(line):
        return re.sub(r"\+\d+/s$", "+N/s", re.sub(r"^\S+Z ", "", line.rstrip("\n")))

    def test_shows_what_watching_tells(self):
        [output] = [output for command, output in examples() if "--watch" in command]
        with subprocess.Popen(self.watch(), stdout=subprocess.PIPE, text=True) as process:
            lines = [process.stdout.readline() for _ in output]
            process.terminate()
        self.assertEqual([self.timeless(line) for line in lines], [self.timeless(line) for line in output])
