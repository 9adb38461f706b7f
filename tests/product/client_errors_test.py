"""What a client makes of agents that are not there, hang up, or say what they should not."""
import pathlib
import socket
import tempfile

from product import Agent, Case, FakeAgent, RawClient, TREE, greeting, run
from schema import CL, SUBJECTS, schema


def with_length(frame, length):
    """The frame with another length in its header."""
    return frame[:12] + length.to_bytes(4, "big") + frame[16:]


def with_luid(frame, luid):
    return frame[:27] + luid + frame[43:]


class ClientErrors(Case):
    @classmethod
    def setUpClass(cls):
        with tempfile.TemporaryDirectory() as folder:
            agent = Agent(pathlib.Path(folder) / "socket", "--data", TREE / "data")
            try:
                with RawClient(agent.path) as client:
                    cls.types = client.exchange()
                    cls.hop_chan = list(client.frames("hop-chan"))
                    cls.channel = list(client.frames("channel"))
                    cls.greeting = greeting(cls.types)
            finally:
                agent.stop()
                agent.log_file.close()

    def answered(self, *said, subject="hop-chan", hang_up=True, options=()):
        fake = FakeAgent(self.socket, b"".join(said), hang_up)
        try:
            return self.show(subject, *options)
        finally:
            fake.stop()

    def given(self, *frames, **how):
        return self.answered(self.greeting, b"ok\n", *frames, **how)

    def abort(self, subject):
        return with_luid(self.hop_chan[0], bytes.fromhex(schema()["bundles"][SUBJECTS[subject]]["luids"][1]))

    def test_whole_show_is_printed(self):
        result = self.given(*self.hop_chan)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.count("message@"), 127)

    def test_no_socket(self):
        self.assert_fails(self.show("hop-chan"), "there is no socket at", self.socket, "wayfind agent --listen")

    def test_nobody_listens(self):
        with socket.socket(socket.AF_UNIX) as left_behind:
            left_behind.bind(str(self.socket))
        self.assert_fails(self.show("hop-chan"), "nobody listens at", "wayfind agent --listen")

    def test_agent_that_lets_nobody_in(self):
        with socket.socket(socket.AF_UNIX) as stuck, socket.socket(socket.AF_UNIX) as waiting:
            stuck.bind(str(self.socket))
            stuck.listen(0)
            waiting.connect(str(self.socket))
            self.assert_fails(self.show("hop-chan", "--timeout", 1), f"the agent at {self.socket} has let no client in for 1 s", "--timeout")

    def test_path_too_long_for_a_socket(self):
        self.socket = "/tmp/" + "x" * 200
        self.assert_fails(self.show("hop-chan"), self.socket + '", has 205 bytes, and may have 1 to 107; choose another one')

    def test_path_of_a_socket_that_is_empty(self):
        self.socket = ""
        self.assert_fails(self.show("hop-chan"), 'path, "", has 0 bytes, and may have 1 to 107; choose another one')

    def test_unknown_subject(self):
        self.assert_fails(self.show("weather"), "there is no show weather", "--help")

    def test_arguments_are_shown_as_they_can_be_printed(self):
        for result in (self.show("bad\n\x1b[31msubject"), self.show("hop-chan", "bad\n\x1b[31msubject"), run("bad\n\x1b[31msubject")):
            self.assert_fails(result, "bad\\x0a\\x1b[31msubject", "--help")
            self.assertNotRegex(result.stderr[:-1], "[\x00-\x1f\x7f]")

    def test_no_subcommand(self):
        self.assert_fails(run(), "A subcommand is required", "--help")
        self.assert_fails(run("trace"), "A subcommand is required", "--help")

    def test_unknown_subcommand(self):
        for arguments in (["weather"], ["weather", "--fine"], ["trace", "weather"], ["types", "weather"]):
            self.assert_fails(run(*arguments), "not expected: weather", "--help")

    def test_missing_release_file(self):
        self.assert_fails(self.show("hop-chan", "--release", self.folder / "none"), self.folder / "none", "No such file")

    def test_malformed_release_file(self):
        path = self.folder / "release"
        path.write_text("# one\nfwe_cl_wayfind_mem_st 626bcfa9bf2ece1433a19411749e06fc many\n")
        self.assert_fails(self.show("hop-chan", "--release", path), path, "line 2", "number of variants")

    def test_peer_that_speaks_something_else(self):
        self.assert_fails(self.answered(b"HTTP/1.1 400 Bad Request\r\n\r\n"), "no greeting of wayfind", "HTTP/1.1 400")

    def test_peer_that_says_nothing(self):
        self.assert_fails(self.answered(), "hung up before its greeting")

    def test_malformed_announcement(self):
        self.assert_fails(self.answered(greeting(b"mem_st 12 1\n")), "the agent's announcement", "line 1")

    def test_announcement_cut_short(self):
        self.assert_fails(self.answered(self.greeting[:-100]), "hung up before its announcement")

    def test_refusal_is_told_with_its_reason(self):
        self.assert_fails(self.answered(self.greeting, b"error out of\x1b[31m order\n"), "the agent refuses: out of\\x1b[31m order")

    def test_hang_up_in_mid_bundle(self):
        result = self.given(*self.hop_chan[:5])
        self.assert_fails(result, "hung up before frame 6 of its show")
        self.assertEqual(result.stdout, "")

    def test_hang_up_in_mid_frame(self):
        self.assert_fails(self.given(self.hop_chan[0], self.hop_chan[1], self.hop_chan[2][:60]), "hung up before frame 3", "60 of ")

    def test_frame_too_short_for_its_record(self):
        short = self.hop_chan[2][:-20]
        self.assert_fails(self.given(*self.hop_chan[:2], with_length(short, len(short)), *self.hop_chan[3:]),
                          "frame 3, fwe_cl_wayfind_hop_chan_msg, is too short for what it holds")

    def test_frame_shorter_than_any(self):
        self.assert_fails(self.given(self.hop_chan[0], with_length(self.hop_chan[1], 42)), "behind frame 1 comes what is no frame")

    def test_frame_longer_than_any(self):
        self.assert_fails(self.given(self.hop_chan[0], with_length(self.hop_chan[1], 0xFFFFFFFF)), "behind frame 1 comes what is no frame")

    def test_frame_of_the_longest_length_is_waited_for(self):
        self.assert_fails(self.given(self.hop_chan[0], with_length(self.hop_chan[1], 64 << 20)), "hung up before frame 2", f"of {64 << 20} bytes")

    def test_frame_of_more_than_the_longest_length(self):
        self.assert_fails(self.given(self.hop_chan[0], with_length(self.hop_chan[1], (64 << 20) + 1)), "behind frame 1 comes what is no frame")

    def test_garbage_in_place_of_a_frame(self):
        self.assert_fails(self.given(self.hop_chan[0], b"garbage" * 20), "behind frame 1 comes what is no frame")

    def test_unknown_luid(self):
        self.assert_fails(self.given(self.hop_chan[0], with_luid(self.hop_chan[1], bytes(range(16)))),
                          "frame 2 has LUID 000102030405060708090a0b0c0d0e0f", "does not know")

    def test_show_given_up_in_the_middle(self):
        result = self.given(*self.hop_chan[:5], self.abort("hop-chan"))
        self.assert_fails(result, "gave up show hop-chan in the middle")
        self.assertEqual(result.stdout, "")

    def test_commit_without_start(self):
        self.assert_fails(self.given(self.hop_chan[-1]), "frame 1, commit of", "ends a bundle that was not begun")

    def test_abort_without_start(self):
        self.assert_fails(self.given(self.abort("hop-chan")), "frame 1, abort of", "ends a bundle that was not begun")

    def test_start_inside_a_start(self):
        self.assert_fails(self.given(*self.hop_chan[:3], self.hop_chan[0]), "frame 4, start of", "begins a bundle inside a bundle")

    def test_member_outside_a_bundle(self):
        self.assert_fails(self.given(self.hop_chan[1]), "frame 1, fwe_cl_wayfind_hop_chan_state_msg, stands outside a bundle")

    def test_member_that_the_bundle_does_not_allow(self):
        result = self.given(*self.hop_chan[:3], self.channel[2], self.hop_chan[-1])
        self.assert_fails(result, "holds a fwe_cl_wayfind_channel_msg, which does not belong in it")
        self.assertEqual(result.stdout, "")

    def test_second_message_of_a_kind_that_stands_once_is_told_behind_the_show(self):
        result = self.given(*self.hop_chan[:2], self.hop_chan[1], *self.hop_chan[2:])
        self.assert_fails(result, "more than one " + CL + "hop_chan_state_msg")
        self.assertEqual(result.stdout.count(f"message@{CL}hop_chan_state_msg"), 2)
        self.assertEqual(result.stdout.count(f"message@{CL}hop_chan_msg"), 126)
        self.assertTrue(result.stdout.endswith("}\n"))

    def test_answer_to_another_question(self):
        self.assert_fails(self.given(*self.channel), "show_channel_response instead of", "show_hop_chan_response")

    def test_silent_agent(self):
        self.assert_fails(self.given(*self.hop_chan[:3], hang_up=False, options=("--timeout", "1")), "silent for 1 s before frame 4", "--timeout")
