"""What an agent writes to stderr: never more than is good, never so that it waits."""
import contextlib
import os
import signal
import subprocess
import time

from product import PATIENCE, TREE, WAYFIND, Case, RawClient


def eventually(condition, patience=20):
    end = time.monotonic() + patience
    while not (done := condition()) and time.monotonic() < end:
        time.sleep(0.05)
    return done


class FullLog(Case):
    """Nobody reads the agent's stderr, a pipe."""

    def setUp(self):
        super().setUp()
        self.reader, writer = os.pipe()
        self.addCleanup(os.close, self.reader)
        os.set_blocking(self.reader, False)
        os.set_blocking(writer, False)
        with contextlib.suppress(BlockingIOError):
            while os.write(writer, b"-" * 4096):
                pass
        os.set_blocking(writer, True)
        self.agent = subprocess.Popen([WAYFIND, "agent", "--listen", str(self.socket), "--data", str(TREE / "data")], stderr=writer)
        self.addCleanup(self.agent.wait)
        self.addCleanup(self.agent.kill)
        os.close(writer)
        self.assertTrue(eventually(self.socket.exists))

    def read(self):
        told = b""
        with contextlib.suppress(BlockingIOError):
            while more := os.read(self.reader, 1 << 20):
                told += more
        return told.replace(b"-" * 4096, b"").decode()

    def test_holds_up_neither_shows_nor_the_end(self):
        self.assert_serves("intf")
        self.assert_serves("intf")
        self.agent.send_signal(signal.SIGTERM)
        self.assertEqual(self.agent.wait(PATIENCE), 0)

    def test_is_told_of_what_it_missed(self):
        for _ in range(3):
            self.assert_serves("intf")
        self.read()
        told = eventually(self.read)
        self.assertEqual(told, "wayfind agent: 4 lines lost here: too many, or nobody read them\n")
        self.assert_serves("intf")
        self.assertTrue(eventually(self.read).endswith("show intf, 5 messages\n"))


class Logs(Case):
    def bad_requests(self, agent, text, count):
        with RawClient(self.socket) as client:
            client.exchange()
            for _ in range(count):
                client.say(text)
                client.file.readline()
        self.assertTrue(eventually(lambda: "lines left out" in agent.log() or count < 10))

    def test_one_client_writes_ten_lines_and_then_one_a_second(self):
        agent = self.start_agent()
        begin = time.monotonic()
        self.bad_requests(agent, b"show " + b"\xff" * 400 + b"\n", 5_000)
        lines = agent.log().splitlines()
        self.assertLessEqual(len(lines), 1 + 10 + 2 * (time.monotonic() - begin) + 1)
        self.assertRegex(lines[-1], r"\): \d+ lines left out$")
        left_out = sum(int(line.split()[-4]) for line in lines if line.endswith("lines left out"))
        self.assertEqual(sum("there is no show" in line for line in lines) + left_out, 5_000)

    def test_foreign_text_is_cut(self):
        agent = self.start_agent()
        self.bad_requests(agent, b"y" * 400 + b"\n", 1)
        self.assertIn(": no request: " + "y" * 80 + "...\n", agent.log())

    def test_characters_that_are_not_seen_are_escaped(self):
        agent = self.start_agent()
        for code in (0x200B, 0x200F, 0x202A, 0x202E, 0x2060, 0x2064, 0x2066, 0x206F, 0xFEFF, 0x061C, 0x180E, 0xFFF9, 0xFFFB, 0xE0000, 0xE007F):
            self.bad_requests(agent, b"a" + chr(code).encode() + b"z\n", 1)
            escaped = "".join(f"\\x{byte:02x}" for byte in chr(code).encode())
            self.assertIn(f": no request: a{escaped}z\n", agent.log())
        for kept in "\u00e9\u200a\u2010\u202f\u205f\u2070\u4e2d\U0001f600":
            self.bad_requests(agent, f"a{kept}z\n", 1)
            self.assertIn(f": no request: a{kept}z\n", agent.log())

    def test_each_line_names_the_process_that_connected(self):
        agent = self.start_agent()
        self.assert_serves("intf")
        with RawClient(self.socket) as client:
            client.exchange()
            client.say("x\n")
            client.file.readline()
        self.assertRegex(agent.log(), rf"client 1 \(uid {os.getuid()}, pid \d+\): show intf, 5 messages\n")
        self.assertIn(f"client 2 (uid {os.getuid()}, pid {os.getpid()}): no request: x\n", agent.log())
