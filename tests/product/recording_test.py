"""Recordings: what a client records of a show is read back into the same messages."""
import os
import re
import subprocess

from product import Case, OLD_RELEASE, WAYFIND, run
from schema import CL, SUBJECTS, Data


def without_root(xml):
    return xml.split("\n", 1)[1].rsplit("\n", 2)[0]


class Recordings(Case):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "recording"

    def test_of_every_show_reads_back(self):
        self.start_agent()
        for subject in SUBJECTS:
            self.file.unlink(missing_ok=True)
            shown = self.show(subject, "--format", "xml", "--record", self.file).stdout
            read = run("recording", self.file, "--format", "xml")
            self.assertEqual(read.returncode, 0, read.stderr)
            self.assertEqual(without_root(read.stdout), without_root(shown), subject)

    def test_of_hard_values_reads_back(self):
        folder = self.folder / "data"
        folder.mkdir()
        Data(50).write(folder)
        self.start_agent(data=folder)
        for subject in ("selection", "channel", "intf"):
            self.file.unlink(missing_ok=True)
            shown = self.show(subject, "--format", "xml", "--record", self.file).stdout
            self.assertEqual(without_root(run("recording", self.file, "--format", "xml").stdout), without_root(shown), subject)

    def test_reads_back_as_text(self):
        self.start_agent()
        shown = self.show("channel", "--record", self.file).stdout
        self.assertEqual(run("recording", self.file).stdout, shown)

    def test_shows_are_appended(self):
        self.start_agent()
        first = self.show("intf", "--record", self.file).stdout
        second = self.show("channel", "--record", self.file).stdout
        self.assertEqual(run("recording", self.file).stdout, first + second)

    def test_each_message_has_its_time(self):
        self.start_agent()
        self.show("intf", "--record", self.file)
        self.assertEqual(len(re.findall(r'^<fwe_ui_wayfind time="\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z">$', self.file.read_text(), re.M)), 5)

    def test_lowered_messages_read_back_as_their_release(self):
        self.start_agent()
        shown = self.show("hop-chan", "--record", self.file, "--release", OLD_RELEASE).stdout
        self.assertEqual(run("recording", self.file, "--release", OLD_RELEASE).stdout, shown)

    def record_policies(self, *counts):
        """Shows selection flows of so many policies; one of 1,000 is longer than a recording takes, one of 250 is not."""
        folder = self.folder / "data"
        folder.mkdir()
        flows = "".join(f"<{CL}select_flow_data><sel_all_policies>" + "".join(f"<policy><policy_seq>{n}</policy_seq></policy>" for n in range(count)) +
                        f"</sel_all_policies></{CL}select_flow_data>" for count in counts)
        (folder / "flow.xml").write_text(f"<fwe_ui_wayfind>{flows}</fwe_ui_wayfind>")
        self.start_agent(data=folder)
        shown = self.show("selection", "--record", self.file, "--format", "xml")
        self.assertEqual(shown.stdout.count("<policy_seq>"), sum(counts))
        self.assertTrue(shown.stdout.endswith("_show_selection_response>\n"))
        read = run("recording", self.file, "--format", "xml").stdout
        return shown, read

    def test_message_too_large_to_record_is_shown_and_then_told(self):
        shown, read = self.record_policies(1000)
        self.assert_fails(shown, self.file, f"too long to be recorded: 1 {CL}select_flow_msg")
        self.assertIn("select_state_msg", read)
        self.assertNotIn("select_flow_msg", read)

    def test_each_message_too_large_to_record_is_counted(self):
        shown, read = self.record_policies(*[1000, 2, 200] * 5)
        self.assert_fails(shown, f"too long to be recorded: 5 {CL}select_flow_msg")
        self.assertEqual(read.count(f"<{CL}select_flow_msg>"), 10)

    def test_messages_that_fill_the_buffer_many_times_are_all_there(self):
        shown, read = self.record_policies(*[100, 250, 1, 200] * 10)
        self.assertEqual((shown.returncode, shown.stderr), (0, ""))
        self.assertEqual(without_root(read), without_root(shown.stdout))

    def test_that_cannot_be_written(self):
        self.start_agent()
        self.assert_fails(self.show("intf", "--record", self.folder / "none/recording"), "cannot record to")

    def test_cut_short(self):
        self.start_agent()
        self.show("intf", "--record", self.file)
        self.file.write_text(self.file.read_text()[:-30])
        read = run("recording", self.file)
        self.assert_fails(read, f"{self.file}:", "no whole recorded message")
        self.assertEqual(read.stdout.count("message@"), 4)

    def test_that_is_something_else(self):
        self.file.write_text("hello\n")
        self.assert_fails(run("recording", self.file), f"{self.file}:1: ")

    def test_with_a_foreign_element(self):
        self.start_agent()
        self.show("intf", "--record", self.file)
        lines = self.file.read_text().splitlines(True)
        at = lines.index("<fwe_if_h>12</fwe_if_h>\n")
        self.file.write_text("".join(lines[:at] + ["<weather/>\n"] + lines[at:]))
        self.assert_fails(run("recording", self.file), f"{self.file}:{at + 1}: unknown element <weather>")

    def test_with_two_messages_in_one_document(self):
        one, other = (f"<{CL}{name}>\n</{CL}{name}>\n" for name in ("intf_sum_msg", "hop_chan_msg"))
        self.file.write_text(f"<fwe_ui_wayfind>\n{one}</fwe_ui_wayfind>\n<fwe_ui_wayfind>\n{one}{other}</fwe_ui_wayfind>\n")
        done = run("recording", self.file)
        self.assertEqual((done.returncode, done.stderr), (1, f"wayfind: {self.file}:8: a second message in one document; "
                                                             "give a file that was recorded\n"))

    def test_printed_to_a_full_disk(self):
        self.start_agent()
        self.show("intf", "--record", self.file)
        with open("/dev/full", "wb") as full:
            done = subprocess.run([WAYFIND, "recording", str(self.file)], stdout=full, stderr=subprocess.PIPE, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (1, "wayfind: cannot write standard output: No space left on device\n"))

    def test_recorded_to_a_full_disk(self):
        self.start_agent()
        for subject in ("intf", "hop-chan"):
            shown = self.show(subject, "--record", "/dev/full")
            self.assertEqual((shown.returncode, shown.stderr), (1, "wayfind: cannot record to /dev/full: No space left on device\n"))
            self.assertEqual(shown.stdout, self.show(subject).stdout)

    def test_missing_file(self):
        self.assert_fails(run("recording", self.file), self.file, "No such file")

    def test_of_a_pipe_lacks_nothing(self):
        self.start_agent()
        os.mkfifo(self.file)
        copy = self.folder / "copy"
        with open(copy, "wb") as target, subprocess.Popen(["cat", str(self.file)], stdout=target):
            shown = self.show("hop-chan", "--record", self.file)
        self.assertEqual((shown.returncode, shown.stderr), (0, ""))
        self.assertEqual(copy.read_text().count("<fwe_ui_wayfind time="), 127)
