"""Shows that go on, and waiting for something to be so."""
import os
import pty
import re
import shutil
import signal
import socket
import subprocess
import threading
import time

from product import PATIENCE, TREE, WAYFIND, Agent, Case, RawClient, greeting, run


class ReplayedAgent:
    """Answers its first client with the first show, its second with the second, and all later ones with the last."""

    def __init__(self, path, said):
        self.said = said
        self.clients = 0
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(str(path))
        self.listener.listen()
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()

    def serve(self):
        while True:
            try:
                peer, _ = self.listener.accept()
            except OSError:
                return
            said = self.said[min(self.clients, len(self.said) - 1)]
            self.clients += 1
            with peer:
                try:
                    peer.sendall(said)
                    while peer.recv(65536):
                        pass
                except OSError:
                    pass

    def stop(self):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.thread.join(PATIENCE)
        self.listener.close()


class Changing(Case):
    """The hop channels of data/, and then the first of them with another state and more packets, the last one gone."""

    def setUp(self):
        super().setUp()
        first = self.recorded(TREE / "data")
        folder = self.folder / "changed"
        shutil.copytree(TREE / "data", folder)
        path = folder / "hop_channels_site_101.xml"
        path.write_text(self.changed(path.read_text()))
        (folder / "hop_channels_site_103.xml").write_text(self.without_last((folder / "hop_channels_site_103.xml").read_text()))
        self.agent = ReplayedAgent(self.socket, [first, self.recorded(folder)])
        self.addCleanup(self.agent.stop)

    @staticmethod
    def changed(text):
        text = re.sub(r"<send_packets>(\d+)", lambda found: f"<send_packets>{int(found[1]) + 1000}", text, count=1)
        return re.sub(r"(<tx_state><WAYFIND_UI_HOP_CHAN_STATE_)REACHABLE", r"\1INITIATED", text, count=1)

    @staticmethod
    def without_last(text):
        begin = text.rindex("<fwe_cl_wayfind_hop_chan_data>")
        return text[:begin] + text[text.index("</fwe_cl_wayfind_hop_chan_data>", begin) + len("</fwe_cl_wayfind_hop_chan_data>"):]

    def recorded(self, data):
        agent = Agent(self.folder / "real", "--data", data)
        try:
            with RawClient(agent.path) as client:
                types = client.exchange()
                return greeting(types) + b"ok\n" + b"".join(client.frames("hop-chan"))
        finally:
            agent.stop()
            agent.log_file.close()

    def watch(self, *options):
        return [WAYFIND, "show", "hop-chan", "--connect", str(self.socket), "--watch", "0.2", *options]

    def test_a_pipe_gets_a_line_for_each_change(self):
        with subprocess.Popen(self.watch(), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as process:
            lines = [process.stdout.readline() for _ in range(3)]
            process.send_signal(signal.SIGTERM)
            rest, errors = process.communicate(timeout=PATIENCE)
        self.assertEqual((process.returncode, rest, errors), (0, "", ""))
        told = [re.sub(r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ ", "", line) for line in lines]
        self.assertEqual(told[0], "~ fwe_cl_wayfind_hop_chan_msg 1 probe.tx_state: REACHABLE -> INITIATED\n")
        self.assertRegex(told[1], r"^~ fwe_cl_wayfind_hop_chan_msg 1 stats\.send_packets: 9999491 -> 10000491 \+\d+/s\n$")
        self.assertEqual(told[2], "- fwe_cl_wayfind_hop_chan_msg 126\n")

    def test_only_what_is_selected_is_watched(self):
        with subprocess.Popen(self.watch("--where", "hop_chan.hop_chan_id > 100"), stdout=subprocess.PIPE, text=True) as process:
            line = process.stdout.readline()
            process.send_signal(signal.SIGINT)
        self.assertTrue(line.endswith(" - fwe_cl_wayfind_hop_chan_msg 126\n"), line)
        self.assertEqual(process.returncode, 0)

    def on_terminal(self, environment=()):
        """What a terminal gets in at least three rounds."""
        process, terminal = pty.fork()
        if process == 0:
            os.execve(WAYFIND, self.watch("--limit", "2"), {**os.environ, "TERM": "xterm", **dict(environment)})
        try:
            end = time.monotonic() + PATIENCE
            while self.agent.clients < 3 and time.monotonic() < end:
                time.sleep(0.05)
            os.kill(process, signal.SIGINT)
            got = b""
            try:
                while chunk := os.read(terminal, 65536):
                    got += chunk
            except OSError:
                pass
            return got.decode().replace("\r\n", "\n"), os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
        finally:
            os.close(terminal)

    def test_a_terminal_gets_a_table_that_is_renewed(self):
        shown, status = self.on_terminal()
        self.assertEqual(status, 0)
        self.assertTrue(shown.startswith("\x1b[?7l\x1b[2J\x1b[H"), shown[:40])
        self.assertTrue(shown.endswith("\x1b[?7h\x1b[J\n"), shown[-40:])
        first, second = shown.split("\x1b[H")[1:3]
        self.assertNotIn("\x1b[1;33m", first)
        self.assertRegex(second, r"\x1b\[1;33m10000491 \+\d+/s\x1b\[0m")
        self.assertIn("\x1b[1;33mINITIATED\x1b[0m", second)

    def test_a_terminal_without_colour_gets_marks(self):
        shown, _ = self.on_terminal({"NO_COLOR": "1"})
        self.assertNotIn("\x1b[1", shown)
        self.assertIn("INITIATED*", shown.split("\x1b[H")[2])

    def test_waiting_ends_when_the_condition_holds(self):
        result = run("wait", "hop-chan", "--connect", self.socket, "--where", "hop_chan.hop_chan_id == 1 and probe.tx_state == INITIATED")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        self.assertEqual(self.agent.clients, 2)


class Watching(Case):
    def test_takes_no_other_format(self):
        self.assert_fails(self.show("hop-chan", "--watch", "--format", "xml"), "--watch renews a table; leave out --format xml")
        self.assert_fails(self.show("hop-chan", "--watch", "--count"), "--watch renews a table; leave out --count")

    def test_takes_seconds_that_can_be_waited(self):
        for seconds in ("0", "-1", "x", "1e9"):
            self.assert_fails(self.show("hop-chan", f"--watch={seconds}"), f"--watch: write 0.1 to 86400 seconds, not {seconds}")

    def test_ends_with_the_agent(self):
        self.assert_fails(self.show("hop-chan", "--watch"), "there is no socket at")


class Waiting(Case):
    def wait(self, *options):
        return run("wait", "hop-chan", "--connect", self.socket, *options)

    def test_ends_with_status_1_when_time_is_up(self):
        self.start_agent()
        result = self.wait("--where", "hop_chan.hop_chan_id == 999", "--timeout", "1")
        self.assertEqual((result.returncode, result.stderr), (1, "wayfind: no hop-chan fits --where within 1 s\n"))

    def test_tells_why_it_was_not_answered(self):
        result = self.wait("--where", "hop_chan.hop_chan_id == 1", "--timeout", "1")
        self.assertEqual(result.returncode, 1)
        self.assertIn("within 1 s; the last time, no agent: there is no socket at", result.stderr)

    def test_is_there_before_the_agent(self):
        with subprocess.Popen([WAYFIND, "wait", "hop-chan", "--connect", str(self.socket), "--where", "hop_chan.hop_chan_id == 1"]) as process:
            time.sleep(0.3)
            self.start_agent()
        self.assertEqual(process.returncode, 0)

    def test_tells_a_mistake_at_once_and_with_another_status(self):
        result = self.wait("--where", "hop_chan.hop_chan_ == 1")
        self.assert_fails(result, "--where, character 10: there is no field hop_chan_; nearest: hop_chan_id")
        self.assertGreater(result.returncode, 1)
