"""What is asked of a show: formats, columns, conditions."""
import csv
import io
import json
import warnings
import xml.etree.ElementTree as ElementTree

from product import OLD_RELEASE, Case, run
from schema import CL, SUBJECTS, Data, schema

with warnings.catch_warnings():
    warnings.simplefilter("ignore")
    import jsonschema

SITE_102 = "hop_chan.dst_site_id == 102"


def ids(result):
    """The identifiers of hop channels in a show's text."""
    return [line.split()[1] for line in result.stdout.splitlines() if line.strip().startswith("hop_chan_id:")]


class Formats(Case):
    def rows(self, subject, *options):
        return list(csv.reader(io.StringIO(self.show(subject, "--format", "csv", *options).stdout)))

    def json_of_every_show(self, tracking, *options):
        folder = self.folder / "data"
        folder.mkdir()
        Data(20).write(folder)
        validator = jsonschema.Draft202012Validator(json.loads(run("show", "--json-schema").stdout))
        self.start_agent("--tracking", tracking, data=folder)
        for subject in SUBJECTS:
            with self.subTest(subject):
                told = json.loads(self.show(subject, "--format", "json", "--tracking", tracking, *options).stdout)
                self.assertEqual(list(validator.iter_errors(told)), [])
                xml = ElementTree.fromstring(self.show(subject, "--format", "xml", "--tracking", tracking).stdout)
                self.assertEqual([message["message"] for message in told], [message.tag for message in xml])
                lines = self.show(subject, "--format", "json", "--lines", "--tracking", tracking, *options).stdout.splitlines()
                self.assertEqual([json.loads(line) for line in lines], told)
                record = schema()["messages"][told[0]["message"]]["records"][0]
                self.assertEqual("@states" in told[0][record], tracking == "on")

    def test_json_of_every_show_fits_the_schema_and_has_its_messages_in_order(self):
        self.json_of_every_show("off")

    def test_json_with_states_fits_the_schema_too(self):
        self.json_of_every_show("on", "--states")

    def test_json_of_an_older_release_fits_the_schema(self):
        self.start_agent()
        validator = jsonschema.Draft202012Validator(json.loads(run("show", "--json-schema").stdout))
        told = json.loads(self.show("hop-chan", "--format", "json", "--release", OLD_RELEASE).stdout)
        self.assertEqual(list(validator.iter_errors(told)), [])
        self.assertNotIn("serv", told[1][CL + "hop_chan_data"])

    def test_table_and_csv_hold_the_key_and_the_columns_of_each_message(self):
        self.start_agent()
        rows = self.rows("hop-chan")
        self.assertEqual(len(rows), 127)
        self.assertEqual(rows[0][0], "hop_chan.hop_chan_id")
        self.assertEqual([row[0] for row in rows[1:]], [str(i) for i in range(1, 127)])
        table = self.show("hop-chan", "--format", "table").stdout.splitlines()
        self.assertEqual(table[0].split(), [path.split(".")[-1].upper() for path in rows[0]])
        self.assertEqual([line.split()[0] for line in table[1:]], [row[0] for row in rows[1:]])

    def test_every_show_has_a_table(self):
        self.start_agent()
        for subject in SUBJECTS:
            with self.subTest(subject):
                self.assertGreater(self.show(subject, "--format", "table").stdout.count("\n"), 1)

    def test_columns_are_those_that_are_asked_for(self):
        self.start_agent()
        self.assertEqual(self.rows("hop-chan", "--columns", "stats.send_packets,hop_chan.hop_chan_id", "--id", "5")[0],
                         ["stats.send_packets", "hop_chan.hop_chan_id"])

    def test_unseen_characters_are_escaped(self):
        folder = self.folder / "data"
        folder.mkdir()
        (folder / "intf.xml").write_text(f"<{CL}intf_data><if_name>a\u202eb</if_name></{CL}intf_data>", encoding="utf-8")
        self.start_agent(data=folder)
        for form in ("table", "csv"):
            self.assertIn("a\\xe2\\x80\\xaeb", self.show("intf", "--format", form).stdout)
        told = json.loads(self.show("intf", "--format", "json").stdout)
        self.assertEqual(told[-1][CL + "intf_data"]["if_name"], "a\\xe2\\x80\\xaeb")


class Selections(Case):
    def test_text_and_xml_hold_what_is_selected_and_what_comes_once(self):
        self.start_agent()
        text = self.show("hop-chan", "--where", SITE_102, "--sort", "-hop_chan.hop_chan_id", "--limit", "3")
        self.assertEqual(ids(text), ["84", "83", "82"])
        self.assertEqual(text.stdout.count("hop_chan_state_msg"), 1)
        xml = ElementTree.fromstring(self.show("hop-chan", "--id", "17", "--format", "xml").stdout)
        self.assertEqual([message.tag for message in xml], [CL + "hop_chan_state_msg", CL + "hop_chan_msg"])
        self.assertEqual(xml.findtext(".//hop_chan_id"), "17")

    def test_json_and_csv_hold_the_same(self):
        self.start_agent()
        options = ("--where", SITE_102, "--sort", "-hop_chan.hop_chan_id", "--limit", "3")
        told = json.loads(self.show("hop-chan", "--format", "json", *options).stdout)
        self.assertEqual([message[CL + "hop_chan_data"]["hop_chan"]["hop_chan_id"] for message in told[1:]], [84, 83, 82])
        rows = self.show("hop-chan", "--format", "csv", "--columns", "hop_chan.hop_chan_id", *options).stdout.split()
        self.assertEqual(rows, ["hop_chan.hop_chan_id", "84", "83", "82"])

    def test_a_count_is_of_what_repeats_and_is_selected(self):
        self.start_agent()
        for options, count in (((), "126"), (("--where", SITE_102), "42"), (("--limit", "5"), "5"), (("--id", "999"), "0")):
            self.assertEqual(self.show("hop-chan", "--count", *options).stdout, count + "\n")
        self.assertEqual(self.show("cl-debug", "--count").stdout, "0\n")

    def test_a_key_of_several_fields_is_written_with_commas(self):
        self.start_agent()
        told = json.loads(self.show("prefixtosite", "--format", "json", "--id", "0,10.2.0.0/16").stdout)
        self.assertEqual([message[CL + "prefixtosite_data"]["pri_site_id"] for message in told], [102])


class Mistakes(Case):
    """Told before anything is asked: there is no agent here."""

    def assert_told(self, told, *options, subject="hop-chan"):
        self.assert_fails(self.show(subject, *options), told)

    def test_of_every_option_that_holds_a_path(self):
        self.assert_told("--where, character 10: there is no field dst_site; nearest: dst_site_id", "--where", "hop_chan.dst_site == 12")
        self.assert_told("--sort, character 10: there is no field hop; nearest: ", "--sort", "hop_chan.hop")
        self.assert_told("--columns, character 1: there is no field hop_id; nearest: hop_chan.hop_id", "--columns", "hop_id", "--format", "csv")
        self.assert_told("--id, character 1: hop_chan.hop_chan_id is a number", "--id", "x")

    def test_of_a_format_that_an_option_means_nothing_to(self):
        self.assert_told("--lines belongs to --format json", "--lines")
        self.assert_told("--states belongs to --format json", "--states")
        self.assert_told("--states belongs to --tracking on", "--states", "--format", "json")
        self.assert_told("--columns belongs to --format table or csv", "--columns", "hop_id")
        self.assert_told("--count prints a number; leave out --format json", "--count", "--format", "json")
        self.assert_told("--format: html not in {text,xml,table,json,csv}", "--format", "html")

    def test_of_a_limit_that_is_no_number(self):
        for limit in ("-1", "1.5", "x"):
            self.assert_told(f"--limit: write a number from 0 on, not {limit}", f"--limit={limit}")

    def test_of_a_show_with_nothing_to_select_among(self):
        self.assert_told("--where, character 1: no message of this show may repeat", "--where", "is_none", subject="cl-debug")
