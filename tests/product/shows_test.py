"""Shows between two processes, every field compared at the far end."""
import os
import pathlib
import re
import subprocess
import unittest
import xml.etree.ElementTree as ElementTree

from product import OLD_RELEASE, WAYFIND, Case, preloaded, run
from schema import CL, SUBJECTS, Data, schema
from shown_xml import Comparison

ENTRIES = int(os.environ["WAYFIND_ENTRIES"])  # of each message, where a show repeats it
OLD = ("--release", OLD_RELEASE)
NEWEST = 3


class ShowCase(Case):
    def compare(self, data, subject, newest, tracking, client=()):
        result = self.show(subject, "--format", "xml", "--tracking", tracking, *client)
        self.assertEqual(result.returncode, 0, result.stderr)
        bundle = SUBJECTS[subject]
        root = ElementTree.fromstring(result.stdout)
        Comparison(self, newest, tracking == "on").bundle(root, bundle, data.shown(bundle))
        return result

    def start_with(self, data, *options):
        folder = self.folder / "data"
        folder.mkdir()
        data.write(folder)
        return self.start_agent(*options, data=folder)


class TenThousandHopChannels(ShowCase):
    def go_through(self, tracking):
        data = Data(10_000, only=[CL + "hop_chan_msg", CL + "hop_chan_state_msg"])
        agent = self.start_with(data, "--tracking", tracking)
        self.compare(data, "hop-chan", NEWEST, tracking)
        self.compare(data, "hop-chan", 0, tracking, OLD)
        self.assertEqual(agent.stop(), 0)

    def test_come_through_without_tracking(self):
        self.go_through("off")

    def test_come_through_with_tracking(self):
        self.go_through("on")


class AllShows(ShowCase):
    def go_through(self, agent_options, newest, client):
        for tracking in ("off", "on"):
            data = Data(ENTRIES, seed=tracking)
            agent = self.start_with(data, *agent_options, "--tracking", tracking)
            for subject in SUBJECTS:
                with self.subTest(subject=subject, tracking=tracking):
                    self.compare(data, subject, newest, tracking, client)
            self.assertEqual(agent.stop(), 0)
            self.doCleanups()
            self.setUp()

    def test_between_equal_releases(self):
        self.go_through((), NEWEST, ())

    def test_from_a_new_agent_to_an_old_client(self):
        self.go_through((), 0, OLD)

    def test_from_an_old_agent_to_a_new_client(self):
        self.go_through(OLD, 0, ())


class Counts(ShowCase):
    def test_are_those_of_their_own_messages(self):
        data = Data({message: 2 + place for place, message in enumerate(schema()["messages"])})
        self.start_with(data)
        for subject in ("global", "global-new"):
            self.compare(data, subject, NEWEST, "off")


class Releases(ShowCase):
    def test_client_says_what_was_lowered_for_it(self):
        self.start_agent()
        self.assertEqual(self.show("hop-chan").stderr, "")
        self.assertEqual(self.show("hop-chan", *OLD).stderr,
                         "wayfind: lowered for this release: fwe_cl_wayfind_hop_chan_data from variant 1 to 0, "
                         "fwe_cl_wayfind_hop_chan_st from variant 1 to 0\n")

    def test_client_says_that_the_agent_is_older(self):
        self.start_agent(*OLD)
        self.assertEqual(self.show("enforce-hop").stderr,
                         "wayfind: the agent's release is older: fwe_cl_wayfind_enforce_hop from variant 1 to 0\n")

    def test_agent_logs_what_it_lowered(self):
        agent = self.start_agent()
        self.show("channel", *OLD)
        self.assertIn("show channel, 9 messages; lowered: fwe_cl_wayfind_channel_data from variant 1 to 0, "
                      "fwe_cl_wayfind_chan_st from variant 3 to 0, fwe_cl_wayfind_chan_stats_st from variant 1 to 0", agent.log())

    def test_old_text_of_hop_channels_holds_no_later_field(self):
        self.start_agent()
        text = self.show("hop-chan", *OLD).stdout
        self.assertEqual(text.count("hop_chan_id:"), 126)
        for later in ("create_ts_msec", "update_ts_msec", "flags_show", "serv@"):
            self.assertNotIn(later, text)

    def release_without(self, name):
        path = self.folder / "release"
        path.write_text("".join(line for line in OLD_RELEASE.read_text().splitlines(True) if not line.startswith(name + " ")))
        return "--release", path

    def test_message_that_the_client_does_not_know_is_left_out(self):
        self.start_agent()
        result = self.show("selection", *self.release_without(CL + "select_flow_msg"))
        self.assertEqual(result.returncode, 0)
        self.assertIn("fwe_cl_wayfind_select_flow_msg left out", result.stderr)
        self.assertIn("select_tc_msg", result.stdout)
        self.assertNotIn("select_flow_msg", result.stdout)
        self.assertEqual(result.stdout.count("select_tc_msg:"), 6)
        self.assertRegex(result.stdout, r"\bcount: 6\n")

    def test_show_of_which_the_client_knows_no_message_is_refused(self):
        self.start_agent()
        result = self.show("enforce-hop", *self.release_without(CL + "enforce_hop_msg"))
        self.assertEqual(result.returncode, 1)
        self.assertIn("takes no message of show enforce-hop", result.stderr)

    def test_tracking_may_differ_between_the_two(self):
        data = Data(10, only=[CL + "hop_chan_msg"])
        self.start_with(data, "--tracking", "on")
        self.show("hop-chan", "--tracking", "off", "--format", "xml")
        self.assert_serves()

    def test_text_closes_every_newest_record(self):
        self.start_agent()
        for subject in SUBJECTS:
            text = self.show(subject).stdout
            self.assertEqual(text.count("{\n"), text.count("}\n"), subject)


    def test_every_bundle_is_a_subject(self):
        self.assertEqual(set(SUBJECTS.values()), set(schema()["bundles"]))


class Output(ShowCase):
    def test_xml_of_a_show_is_a_data_file(self):
        for tracking in ("off", "on"):
            options = ("--tracking", tracking)
            shows = {}
            agent = self.start_agent(*options)
            for subject in SUBJECTS:
                shows[subject] = self.show(subject, "--format", "xml", *options).stdout
            self.assertEqual(agent.stop(), 0)
            for subject, first in shows.items():
                with self.subTest(subject=subject, tracking=tracking):
                    folder = self.folder / f"{subject}-{tracking}"
                    folder.mkdir()
                    (folder / "show.xml").write_text(first)
                    again = self.start_agent(*options, data=folder)
                    second = self.show(subject, "--format", "xml", *options).stdout
                    self.assertEqual(again.stop(), 0)
                    self.assertEqual(self.without_totals(second), self.without_totals(first))

    def without_totals(self, xml):
        """The counts of a global show are of all that its agent has, in whatever file."""
        return re.sub(r"<(num_\w+)( state=\"2\")?>\d+</\1>", "", xml) if CL + "global_info_data" in xml else xml

    def test_tracked_fields_carry_their_state(self):
        self.start_agent("--tracking", "on")
        xml = self.show("hop-chan", "--tracking", "on", "--format", "xml").stdout
        self.assertRegex(xml, r'<num_hop_chans state="\d+">126</num_hop_chans>')

    def passes(self, subject, counted, *options):
        """How often a show begins to write an element, or begins or ends the text of a message; and the show."""
        count = self.folder / "count"
        shown = self.show(subject, *options, environment=preloaded(counted_tag=counted, count=count))
        self.assertEqual((shown.returncode, shown.stderr), (0, ""))
        return int(count.read_text()), shown.stdout

    def test_each_message_is_printed_in_one_pass(self):
        for tracking in ("off", "on"):
            agent = self.start_with(Data(10, seed=tracking), "--tracking", tracking)
            for subject, bundle in SUBJECTS.items():
                for message, _ in schema()["bundles"][bundle]["members"]:
                    passes, xml = self.passes(subject, message, "--format", "xml", "--tracking", tracking)
                    self.assertEqual(passes, xml.count(f"<{message}>"), (subject, message))
                passes, text = self.passes(subject, "message", "--tracking", tracking)
                self.assertEqual(passes, 2 * text.count("message@"), subject)
            agent.stop()
            self.doCleanups()
            self.setUp()

    def test_long_arrays_are_printed_in_one_pass(self):
        many = 200_000
        for subject, record, path, element in (
                ("channel", "channel_data", "chan/src_intf", "<src_intf_id>255</src_intf_id>"),
                ("selection", "select_flow_data", "sel_all_policies", "<policy/>")):
            folder = self.folder / subject
            folder.mkdir()
            opened = "".join(f"<{name}>" for name in path.split("/"))
            closed = "".join(f"</{name}>" for name in reversed(path.split("/")))
            (folder / "data.xml").write_text(f"<{CL}{record}>{opened}{element * (many // (1 if subject == 'channel' else 20))}{closed}</{CL}{record}>")
            self.start_agent(data=folder)
            message = CL + record.removesuffix("_data") + "_msg"
            self.assertEqual(self.passes(subject, message, "--format", "xml")[0], 1)
            passes, text = self.passes(subject, "message")
            self.assertEqual(passes, 2 * text.count("message@"))
            self.doCleanups()
            self.setUp()

    def test_characters_that_are_not_seen_are_escaped(self):
        folder = self.folder / "data"
        folder.mkdir()
        (folder / "intf.xml").write_text(f"<{CL}intf_data><if_name>a\u202eb\u200bc\u00e9</if_name></{CL}intf_data>", encoding="utf-8")
        self.start_agent(data=folder)
        recording = self.folder / "recording"
        for shown in (self.show("intf"), self.show("intf", "--format", "xml", "--record", recording), run("recording", recording)):
            self.assertIn("a\\xe2\\x80\\xaeb\\xe2\\x80\\x8bc\u00e9", shown.stdout)

    def test_escaped_characters_read_back(self):
        folder = self.folder / "data"
        folder.mkdir()
        (folder / "intf.xml").write_text(f"<{CL}intf_data><if_name>a\u202eb</if_name></{CL}intf_data>", encoding="utf-8")
        self.start_agent(data=folder)
        shown = self.show("intf", "--format", "xml").stdout
        self.doCleanups()
        self.setUp()
        (self.folder / "again.xml").write_text(shown)
        self.start_agent(data=self.folder)
        self.assertEqual(self.show("intf", "--format", "xml").stdout, shown)

    def show_into(self, output):
        return subprocess.run([WAYFIND, "show", "hop-chan", "--connect", str(self.socket)], stdout=output, stderr=subprocess.PIPE,
                              text=True, check=False)

    def test_full_disk_is_no_success(self):
        self.start_agent()
        with open("/dev/full", "wb") as full:
            result = self.show_into(full)
        self.assertEqual((result.returncode, result.stderr), (1, "wayfind: cannot write standard output: No space left on device\n"))

    def test_reader_that_has_gone_is_no_success(self):
        self.start_agent()
        reader, writer = os.pipe()
        os.close(reader)
        with open(writer, "wb") as pipe:
            result = self.show_into(pipe)
        self.assertEqual((result.returncode, result.stderr), (1, "wayfind: cannot write standard output: Broken pipe\n"))


def host_interfaces():
    """Name, index, whether it is up, and whether it has a carrier too, twice: once for each direction."""
    for device in pathlib.Path("/sys/class/net").iterdir():
        is_up = int((device / "flags").read_text(), 16) & 1
        try:
            carrier = is_up and int((device / "carrier").read_text())
        except OSError:  # one that is down has none to tell
            carrier = 0
        yield device.name, (device / "ifindex").read_text().strip(), str(is_up), str(carrier), str(carrier)


class LiveInterfaces(ShowCase):
    FIELDS = ("if_name", "fwe_if_h", "sel_enabled", "ingress_smp_enabled", "egress_smp_enabled")

    def assert_host_is_shown(self):
        root = ElementTree.fromstring(self.show("intf", "--format", "xml").stdout)
        shown = {tuple(data.findtext(field) for field in self.FIELDS) for data in root.iter(CL + "intf_data")}
        host = set(host_interfaces())
        self.assertTrue(host)
        self.assertEqual(shown, host)

    def test_stand_in_for_those_of_the_data(self):
        self.start_agent("--live-interfaces")
        self.assert_host_is_shown()

    def test_need_no_data(self):
        self.start_agent_without_data("--live-interfaces")
        self.assert_host_is_shown()
        other = ElementTree.fromstring(self.show("hop-chan", "--format", "xml").stdout)
        self.assertEqual([count.text for count in other.iter("num_hop_chans")], ["0"])
        self.assertEqual(list(other.iter(CL + "hop_chan_msg")), [])


if __name__ == "__main__":
    unittest.main()
