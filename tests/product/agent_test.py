"""An agent and its clients: whatever they do it goes on serving, and it ends when it is told to."""
import fcntl
import os
import signal
import socket
import subprocess
import threading
import time
from concurrent import futures

from product import OLD_RELEASE, PATIENCE, WAYFIND, Agent, Case, RawClient, TREE, greeting, preloaded, run
from schema import CL, SUBJECTS, Data, schema


class AgentLife(Case):
    def test_ends_on_a_signal_and_takes_its_socket_away(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            agent = self.start_agent()
            self.assertTrue(self.socket.exists())
            self.assertEqual(agent.stop(number), 0)
            self.assertFalse(self.socket.exists())

    def test_takes_over_the_socket_of_an_agent_that_is_gone(self):
        self.start_agent().stop(signal.SIGKILL)
        self.assertTrue(self.socket.exists())
        self.start_agent()
        self.assert_serves()

    def test_leaves_the_socket_of_a_living_agent_alone(self):
        self.start_agent()
        self.assert_fails(run("agent", "--listen", self.socket, "--data", TREE / "data"), "an agent is listening at", "choose another path")
        self.assert_serves()

    def test_leaves_a_file_alone_that_is_no_socket(self):
        self.socket.write_text("mine")
        self.assert_fails(run("agent", "--listen", self.socket, "--data", TREE / "data"), "is no socket")
        self.assertEqual(self.socket.read_text(), "mine")

    def test_leaves_the_socket_alone_that_took_the_place_of_its_own(self):
        agent = self.start_agent()
        self.socket.unlink()
        with socket.socket(socket.AF_UNIX) as other:
            other.bind(str(self.socket))
            agent.stop()
            self.assertTrue(self.socket.exists())

    def test_folder_of_the_socket_must_be_there(self):
        self.assert_fails(run("agent", "--listen", self.folder / "none/socket", "--data", TREE / "data"), "cannot listen at")

    def test_once_ends_with_the_first_client(self):
        agent = self.start_agent("--once")
        self.assert_serves()
        self.assertEqual(agent.process.wait(60), 0)

    def test_once_is_for_a_client_that_says_something(self):
        agent = self.start_agent("--once", "--idle-limit", 1)
        self.assert_fails(run("agent", "--listen", self.socket, "--data", TREE / "data"), "an agent is listening at")
        with RawClient(self.socket) as silent:
            silent.file.read()
        self.assert_serves()
        self.assertEqual(agent.process.wait(60), 0)

    def test_once_ends_with_a_client_that_fell_silent(self):
        agent = self.start_agent("--once", "--idle-limit", 1)
        with RawClient(self.socket) as client:
            client.exchange()
            self.assertEqual(agent.process.wait(60), 0)

    def test_of_many_that_find_a_stale_socket_one_listens(self):
        with socket.socket(socket.AF_UNIX) as left_behind:
            left_behind.bind(str(self.socket))
        agents = [subprocess.Popen([WAYFIND, "agent", "--listen", str(self.socket), "--data", str(TREE / "data")], stderr=subprocess.DEVNULL)
                  for _ in range(6)]
        end = time.monotonic() + PATIENCE
        while sum(agent.poll() is None for agent in agents) > 1 and time.monotonic() < end:
            time.sleep(0.02)
        try:
            self.assert_serves()
        finally:
            for agent in agents:
                agent.terminate()
        self.assertEqual(sorted(agent.wait(PATIENCE) for agent in agents), [0, 1, 1, 1, 1, 1])

    def test_folder_that_somebody_keeps_locked_is_no_hindrance(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        fcntl.flock(folder, fcntl.LOCK_EX)
        self.start_agent()
        self.assert_serves()

    def test_bad_release_file(self):
        self.assert_fails(run("agent", "--listen", self.socket, "--data", TREE / "data", "--release", TREE / "data/maps.xml"), "maps.xml: line 1")

    def test_needs_something_to_answer_from(self):
        self.assert_fails(run("agent", "--listen", self.socket), "--data DIR")


class AgentUnderBadClients(Case):
    def test_greetings_that_are_none_are_refused(self):
        self.start_agent()
        for said in (b"\0" * 100 + b"\n", b"GET / HTTP/1.1\r\n", b"wayfind 2 0\n", b"wayfind 1 99999999\n", b"wayfind 1 -1\n", b"x" * 5000):
            with RawClient(self.socket) as client:
                client.say(said)
                client.file.read(int(client.file.readline().split()[2]))
                self.assertTrue(client.file.readline().startswith(b"error "), said)
                self.assertEqual(client.file.read(), b"")
        self.assert_serves()

    def test_announcement_that_is_none_is_refused(self):
        self.start_agent()
        with RawClient(self.socket) as client:
            client.exchange(b"no list\n")
            self.assertRegex(client.file.readline(), rb"^error the announcement: line 1: ")
        self.assert_serves()

    def test_request_that_is_none_is_refused(self):
        self.start_agent()
        with RawClient(self.socket) as client:
            client.exchange()
            client.say("remove everything\n")
            self.assertEqual(client.file.readline(), b"error no request: remove everything\n")

    def test_unknown_show_is_refused_and_the_next_one_answered(self):
        self.start_agent()
        with RawClient(self.socket) as client:
            client.exchange()
            client.say("show weather\n")
            self.assertEqual(client.file.readline(), b"error there is no show weather\n")
            self.assertEqual(len(list(client.frames("hop-chan"))), 129)

    def test_sequence_counts_the_frames_of_a_connection(self):
        self.start_agent()
        with RawClient(self.socket) as client:
            client.exchange()
            frames = list(client.frames("intf")) + list(client.frames("intf"))
            self.assertEqual([int.from_bytes(frame[8:12], "big") for frame in frames], list(range(14)))

    def test_requests_that_come_together_are_answered_in_turn(self):
        self.start_agent()
        with RawClient(self.socket) as client:
            client.exchange()
            client.say("show intf\nshow nothing\nshow channel\nshow chan")
            client.socket.shutdown(socket.SHUT_WR)
            told = client.file.read()
            self.assertEqual([told.count(word) for word in (b"ok\n", b"error there is no show nothing\n")], [2, 1])
            self.assertEqual(told.count(b"\xbc" + b"\xff" * 6), 7 + 11)

    def test_client_that_has_said_all_is_still_answered(self):
        self.start_agent()
        with RawClient(self.socket) as client:
            types = client.exchange()
            self.assertTrue(types)
            client.say("show hop-chan\n")
            client.socket.shutdown(socket.SHUT_WR)
            self.assertEqual(client.file.readline(), b"ok\n")
            self.assertGreater(len(client.file.read()), 50_000)

    def test_clients_that_go_away_at_any_point(self):
        agent = self.start_agent()
        with RawClient(self.socket) as client:
            said = greeting(client.exchange()) + b"show hop-chan\n"
        for length in list(range(0, len(said), 97)) + [len(said)]:
            with RawClient(self.socket) as client:
                client.say(said[:length])
        self.assert_serves()
        self.assertIsNone(agent.process.poll())

    def test_client_that_does_not_read_holds_up_nobody(self):
        folder = self.folder / "data"
        folder.mkdir()
        Data(3_000, only=[CL + "hop_chan_msg"]).write(folder)
        agent = self.start_agent(data=folder)
        with RawClient(self.socket) as client:
            client.exchange()
            client.say("show hop-chan\n")
            before = agent.memory()
            for _ in range(3):
                self.assert_serves("hop-chan")
            self.assertLess(agent.memory() - before, 4096)
            client.file.readline()
            time.sleep(0.2)
            self.assertEqual(len(client.file.read(100_000)), 100_000)

    def test_client_that_asks_and_does_not_read_is_held_back_and_let_go(self):
        agent = self.start_agent("--idle-limit", 1)
        with RawClient(self.socket) as client:
            client.exchange()
            client.socket.settimeout(0.5)
            before = agent.memory()
            sent = 0
            with self.assertRaises(OSError):  # held back, or let go by now
                while sent < 20_000_000:
                    sent += client.socket.send(b"show x\n" * 9_000)
            self.assertLess(agent.memory() - before, 4096)
            time.sleep(1.5)
            self.assertIn("let go, silent for 1 s", agent.log())
        self.assert_serves()

    def test_requests_held_back_are_answered_once_the_client_reads(self):
        self.start_agent()
        with RawClient(self.socket) as client:
            client.exchange()
            count = 20_000
            sender = threading.Thread(target=client.say, args=(b"show x\n" * count,))
            sender.start()
            time.sleep(0.5)
            for _ in range(count):
                self.assertEqual(client.file.readline(), b"error there is no show x\n")
            sender.join()

    def test_silent_client_is_let_go(self):
        agent = self.start_agent("--idle-limit", 1)
        with RawClient(self.socket) as client:
            client.exchange()
            self.assertEqual(client.file.read(), b"")
        self.assertIn("let go, silent for 1 s", agent.log())
        self.assert_serves()

    def test_more_clients_than_it_takes_at_once_are_served_in_turn(self):
        self.start_agent("--idle-limit", 2)
        crowd = [RawClient(self.socket) for _ in range(80)]
        self.assert_serves()
        for client in crowd:
            client.close()

    def test_many_clients_at_once(self):
        self.start_agent()
        results = []
        threads = [threading.Thread(target=lambda: results.append(self.show("channel"))) for _ in range(12)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual([result.returncode for result in results], [0] * 12)
        self.assertEqual(len({result.stdout for result in results}), 1)

    def test_memory_stays_flat_over_many_bad_clients(self):
        agent = self.start_agent("--tracking", "on")
        with RawClient(self.socket) as client:
            types = client.exchange()
        old = OLD_RELEASE.read_bytes()

        def bad_clients(rounds):
            for number in range(rounds):
                with RawClient(self.socket) as client:
                    client.exchange([types, old, b"x\n"][number % 3])
                    try:
                        client.say([b"show hop-chan\n", b"show selection\n", b"show nothing\n", b"\xff" * 600][number % 4])
                        client.socket.shutdown(socket.SHUT_WR)
                        client.file.read(number % 7 * 100)
                    except ConnectionError:
                        pass  # the agent has had enough of it

        bad_clients(200)
        before = agent.memory()
        bad_clients(1_000)
        self.assertLess(agent.memory() - before, 2048)
        self.assert_serves()


class AgentOutOfMemory(Case):
    """It is refused memory for the fifth message that it sends: the state message and three hop channels are out by then."""

    def setUp(self):
        super().setUp()
        self.agent = self.start_agent(environment=preloaded(refused_message=5))
        self.aborted = "): show hop-chan aborted: message 5, fwe_cl_wayfind_hop_chan_msg, cannot be sent: Cannot allocate memory"

    def test_gives_up_its_show_and_serves_the_next_client(self):
        result = self.show("hop-chan")
        self.assert_fails(result, "the agent gave up show hop-chan in the middle")
        self.assertEqual(result.stdout, "")
        self.assertIn(self.aborted, self.agent.log())
        result = self.show("hop-chan")
        self.assertEqual((result.returncode, result.stdout.count("hop_chan_id:")), (0, 126))
        self.assertRegex(self.agent.log(), r"client 2 \(uid \d+, pid \d+\): show hop-chan, 127 messages\n")

    def test_gives_up_its_show_and_goes_on_with_the_connection(self):
        abort, commit = (bytes.fromhex(luid) for luid in schema()["bundles"][SUBJECTS["hop-chan"]]["luids"][1:])
        with RawClient(self.socket) as client:
            client.exchange()
            frames = list(client.frames("hop-chan"))
            self.assertEqual((len(frames), frames[-1][27:]), (1 + 4 + 1, abort))
            self.assertIn(self.aborted, self.agent.log())
            frames = list(client.frames("hop-chan"))
            self.assertEqual((len(frames), frames[-1][27:]), (1 + 127 + 1, commit))


class TwoAgents(Case):
    def test_two_shows_at_once_from_two_agents(self):
        first = self.start_agent()
        second = Agent(self.folder / "second", "--data", TREE / "data", "--release", OLD_RELEASE)
        self.addCleanup(second.log_file.close)
        self.addCleanup(second.stop)
        # Neither agent answers before both clients run: what a client asks waits in its socket.
        for agent in (first, second):
            agent.process.send_signal(signal.SIGSTOP)
            self.addCleanup(agent.process.send_signal, signal.SIGCONT)
        clients = [subprocess.Popen([WAYFIND, "show", "hop-chan", "--connect", agent.path], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                    text=True) for agent in (first, second)]
        time.sleep(0.2)
        self.assertEqual([client.poll() for client in clients], [None, None])
        for agent in (first, second):
            agent.process.send_signal(signal.SIGCONT)
        with futures.ThreadPoolExecutor() as pool:
            shown = [text for text, _ in pool.map(lambda client: client.communicate(timeout=PATIENCE), clients)]
        self.assertEqual([client.returncode for client in clients], [0, 0])
        self.assertEqual([text.count("hop_chan_id:") for text in shown], [126, 126])
        self.assertEqual([text.count("serv@") for text in shown], [126, 0])
