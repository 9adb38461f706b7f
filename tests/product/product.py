"""Processes of the command, and peers that are not it."""
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import time
import unittest

WAYFIND = os.environ["WAYFIND"]
TREE = pathlib.Path(__file__).resolve().parents[2]
OLD_RELEASE = TREE / "data/releases/variant-0"
PATIENCE = 180
CONTROL_LENGTH = 43
DRIP = 0.2  # seconds between two bytes


def environment_with(variables):
    """That of the test, and these, a dictionary or its pairs. Under a sanitizer freed memory would otherwise be kept, and no measure of memory would say anything;
    and nothing could be preloaded."""
    options_of_sanitizer = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1:verify_asan_link_order=0"
    return {**os.environ, "ASAN_OPTIONS": options_of_sanitizer, **dict(variables)}


def preloaded(**variables):
    """Pairs for a process that the failing platform is preloaded into."""
    return [("LD_PRELOAD", os.environ["WAYFIND_FAILING_PLATFORM"]), *((f"WAYFIND_{name.upper()}", str(value)) for name, value in variables.items())]


class Agent:
    """A running agent. Its log is what it wrote to stderr. environment: variables that it has beyond those of the test."""

    def __init__(self, socket_path, *options, environment=()):
        self.path = str(socket_path)
        self.log_file = tempfile.TemporaryFile("w+")
        self.process = subprocess.Popen([WAYFIND, "agent", "--listen", self.path, *map(str, options)], stderr=self.log_file,
                                        env=environment_with(environment))
        end = time.monotonic() + PATIENCE
        while "listening at" not in self.log():
            if self.process.poll() is not None or time.monotonic() > end:
                self.stop(signal.SIGKILL)
                raise RuntimeError("no agent: " + self.log())
            time.sleep(0.02)

    def log(self):
        self.log_file.seek(0)
        return self.log_file.read()

    def stop(self, number=signal.SIGTERM):
        if self.process.poll() is None:
            self.process.send_signal(number)
        return self.process.wait(PATIENCE)

    def memory(self):
        """Resident KiB."""
        for line in pathlib.Path(f"/proc/{self.process.pid}/status").read_text(encoding="ascii").splitlines():
            if line.startswith("VmRSS:"):
                return int(line.split()[1])
        raise RuntimeError("no VmRSS")


def run(*arguments, environment=(), **how):
    how = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **how}
    return subprocess.run([WAYFIND, *map(str, arguments)], text=True, timeout=PATIENCE, check=False, env=environment_with(environment), **how)


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        self.socket = self.folder / "socket"

    def start_agent(self, *options, data=TREE / "data", environment=()):
        return self.start_agent_without_data("--data", data, *options, environment=environment)

    def start_agent_without_data(self, *options, environment=()):
        agent = Agent(self.socket, *options, environment=environment)
        self.addCleanup(agent.log_file.close)
        self.addCleanup(agent.stop)
        return agent

    def show(self, subject, *options, **how):
        return run("show", subject, "--connect", self.socket, *options, **how)

    def assert_fails(self, result, *words):
        """One line on stderr with all these words, and a status that says so."""
        self.assertGreater(result.returncode, 0, result.stdout[:200])
        lines = result.stderr.splitlines()
        self.assertEqual(len(lines), 1, result.stderr)
        self.assertTrue(lines[0].startswith("wayfind: "), lines[0])
        for word in words:
            self.assertIn(str(word), lines[0])

    def assert_serves(self, subject="hop-chan"):
        result = self.show(subject)
        self.assertEqual(result.returncode, 0, result.stderr)


class RawClient:
    """A client that says what it likes."""

    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(str(path))
        self.socket.settimeout(PATIENCE)
        self.file = self.socket.makefile("rb")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self.file.close()
        self.socket.close()

    def say(self, data):
        self.socket.sendall(data.encode() if isinstance(data, str) else data)

    def exchange(self, types=None):
        """Gives the agent's type list, and tells it back unless another one is given."""
        own = self.file.read(int(self.file.readline().split()[2]))
        self.say(greeting(own if types is None else types))
        return own

    def frames(self, subject):
        """The frames of a show, from its start to its commit."""
        self.say(f"show {subject}\n")
        if (answer := self.file.readline()) != b"ok\n":
            raise RuntimeError(answer)
        controls = 0
        while True:
            head = self.file.read(CONTROL_LENGTH)
            frame = head + self.file.read(int.from_bytes(head[12:16], "big") - CONTROL_LENGTH)
            yield frame
            controls = controls + (len(frame) == CONTROL_LENGTH)
            if controls == 2:
                return


def greeting(types):
    return b"wayfind 1 %d\n" % len(types) + types


class FakeAgent:
    """Takes one client, reads what it says, and says these bytes, the last ones drop by drop; then hangs up, or waits for the client to."""

    def __init__(self, path, said, hang_up=True, dripped=b""):
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(str(path))
        self.listener.listen()
        self.said = said
        self.hang_up = hang_up
        self.dripped = dripped
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()

    def serve(self):
        peer, _ = self.listener.accept()
        with peer:
            try:
                peer.sendall(self.said)
                for drop in self.dripped:
                    time.sleep(DRIP)
                    peer.sendall(bytes([drop]))
                if self.hang_up:
                    peer.shutdown(socket.SHUT_WR)
                while peer.recv(65536):
                    pass
            except OSError:
                pass

    def stop(self):
        self.thread.join(PATIENCE)
        self.listener.close()
