"""Peers that take their time, at both ends: each has a deadline or a least rate, and those who keep to it lose nothing."""
import contextlib
import subprocess
import time

from product import DRIP, PATIENCE, TREE, WAYFIND, Agent, Case, FakeAgent, RawClient, greeting
from schema import CL, Data

PLACES = 64


class LongShows(Case):
    """An agent whose show of hop channels is far longer than what a socket holds."""

    def start_agent(self, *options, **how):
        folder = self.folder / "data"
        folder.mkdir()
        Data(3_000, only=[CL + "hop_chan_msg"]).write(folder)
        return super().start_agent(*options, data=folder, **how)


class SlowClients(LongShows):
    def assert_let_go_while_dripping(self, agent, client, text, reason):
        """Each byte comes well within the idle limit."""
        with self.assertRaises(OSError):
            for byte in text:
                client.say(bytes([byte]))
                time.sleep(DRIP)
        self.assertIn(f"let go, {reason} for 1 s", agent.log())
        self.assert_serves("intf")

    def test_that_drips_its_greeting_is_let_go(self):
        agent = self.start_agent("--deadline", 1)
        with RawClient(self.socket) as client:
            self.assert_let_go_while_dripping(agent, client, b"wayfind 1 100000".ljust(50, b"0"), "has not announced its release")

    def test_that_drips_its_announcement_is_let_go(self):
        agent = self.start_agent("--deadline", 1)
        with RawClient(self.socket) as client:
            client.say(b"wayfind 1 1000\n")
            self.assert_let_go_while_dripping(agent, client, b"#" * 50, "has not announced its release")

    def test_that_drips_a_request_is_let_go(self):
        agent = self.start_agent("--deadline", 1)
        with RawClient(self.socket) as client:
            client.exchange()
            self.assert_let_go_while_dripping(agent, client, b"show ".ljust(50, b"x"), "has begun a request")

    def test_may_be_silent_between_requests(self):
        self.start_agent("--deadline", 1)
        with RawClient(self.socket) as client:
            client.exchange()
            for _ in range(2):
                time.sleep(1.8)
                client.say("show nothing\n")
                self.assertEqual(client.file.readline(), b"error there is no show nothing\n")

    def test_that_reads_like_a_pager_keeps_its_place_while_places_are_free(self):
        self.start_agent("--deadline", 1, "--idle-limit", 1)
        with RawClient(self.socket) as client:
            client.exchange()
            frames = client.frames("hop-chan")
            next(frames)
            time.sleep(3.5)
            self.assert_serves("intf")
            self.assertEqual(sum(1 for _ in frames), 1 + 3_000 + 1)


class FullHouse(LongShows):
    """All places are taken."""

    def take_places(self, count):
        clients = [self.enterContext(contextlib.closing(RawClient(self.socket))) for _ in range(count)]
        for client in clients:
            client.exchange()
        return clients

    def test_of_those_who_do_not_read_their_show_gives_a_place_to_the_next(self):
        agent = self.start_agent("--deadline", 1, "--idle-limit", 600)
        for client in self.take_places(PLACES):
            client.say("show hop-chan\n")
        for _ in range(3):
            self.assert_serves("intf")
        self.assertIn("let go for one who waits, slower than 4096 bytes a second", agent.log())

    def test_of_those_who_drip_requests_gives_a_place_to_the_next(self):
        self.start_agent("--deadline", 1, "--idle-limit", 600)
        crowd = self.take_places(PLACES)
        asking = subprocess.Popen([WAYFIND, "show", "intf", "--connect", str(self.socket)], stdout=subprocess.DEVNULL)
        end = time.monotonic() + 20
        while asking.poll() is None and time.monotonic() < end:
            for client in crowd:
                with contextlib.suppress(OSError):
                    client.say("show x\n")
            time.sleep(DRIP)
        self.assertEqual(asking.wait(PATIENCE), 0)

    def test_keeps_those_who_are_in_time(self):
        agent = self.start_agent("--deadline", 600, "--idle-limit", 600)
        crowd = self.take_places(PLACES)
        self.assert_fails(self.show("intf", "--timeout", 2), "silent for 2 s before its greeting")
        for client in crowd:
            client.say("show nothing\n")
            self.assertEqual(client.file.readline(), b"error there is no show nothing\n")
        self.assertNotIn("let go", agent.log())

    def test_lets_the_slow_one_go_and_not_the_fast_one(self):
        agent = self.start_agent("--deadline", 2, "--idle-limit", 600)
        fast, *slow = self.take_places(PLACES)
        for client in slow:
            client.say("show hop-chan\n")
        served = 0
        waiting = []
        end = time.monotonic() + 6
        while time.monotonic() < end:  # whole shows, one behind the other
            served += sum(1 for _ in fast.frames("hop-chan"))
            if len(waiting) < 3:
                waiting.append(subprocess.Popen([WAYFIND, "show", "intf", "--connect", str(self.socket)], stdout=subprocess.DEVNULL))
        self.assertEqual([client.wait(PATIENCE) for client in waiting], [0, 0, 0])
        self.assertGreater(served, 3_000)
        self.assertIn("let go for one who waits", agent.log())
        fast.say("show nothing\n")
        self.assertEqual(fast.file.readline(), b"error there is no show nothing\n")


class SlowAgents(Case):
    def assert_given_up(self, said, dripped, *words):
        fake = FakeAgent(self.socket, said, dripped=dripped)
        begin = time.monotonic()
        try:
            self.assert_fails(self.show("hop-chan", "--timeout", 1), "the agent is too slow for 1 s before", *words)
        finally:
            fake.stop()
        self.assertLess(time.monotonic() - begin, 0.9 * DRIP * len(dripped))

    def test_that_drips_its_greeting(self):
        self.assert_given_up(b"", b"wayfind 1 1000".ljust(60, b"0"), "its greeting")

    def test_that_drips_its_announcement(self):
        self.assert_given_up(b"wayfind 1 1000\n", b"#" * 60, "its announcement")

    def test_that_drips_its_show(self):
        agent = Agent(self.folder / "real", "--data", TREE / "data")
        try:
            with RawClient(agent.path) as client:
                types = client.exchange()
                frames = b"".join(client.frames("hop-chan"))
        finally:
            agent.stop()
            agent.log_file.close()
        self.assert_given_up(greeting(types) + b"ok\n" + frames[:43], frames[43:103], "frame 2 of its show")
