"""What an agent says of data that it cannot take: file, line and reason, and it does not start."""
import os

from product import Case, run
from schema import CL, Data

UNREACHABLE = "WAYFIND_UI_HOP_CHAN_STATE_UNREACHABLE"
REACHABLE = "WAYFIND_UI_HOP_CHAN_STATE_REACHABLE"
ADDR_CHANGE = "WAYFIND_UI_HOP_CHAN_FLAG_ADDR_CHANGE"
ACK = "WAYFIND_UI_HOP_CHAN_FLAG_ACK"


class DataErrors(Case):
    def refused(self, text, *words, name="bad.xml"):
        path = self.folder / name
        path.write_text(text)
        self.assert_fails(run("agent", "--listen", self.socket, "--data", self.folder), *words)

    def hop_chan(self, inside):
        return f"<fwe_ui_wayfind>\n<{CL}hop_chan_data>\n{inside}\n</{CL}hop_chan_data>\n</fwe_ui_wayfind>\n"

    def test_missing_folder(self):
        self.assert_fails(run("agent", "--listen", self.socket, "--data", self.folder / "none"), self.folder / "none", "No such file")

    def test_folder_without_data(self):
        self.assert_fails(run("agent", "--listen", self.socket, "--data", self.folder), "no file in it ends in .xml")

    def test_unreadable_file(self):
        (self.folder / "folder.xml").mkdir()
        self.assert_fails(run("agent", "--listen", self.socket, "--data", self.folder), "folder.xml: Is a directory")

    def test_text_that_is_no_xml(self):
        self.refused("hello\n", "bad.xml:1: ")

    def test_file_without_content(self):
        self.refused("", "bad.xml:")

    def test_element_that_is_not_closed(self):
        self.refused(self.hop_chan("<hop_chan>\n<hop_id>1</hop_id>\n"), "bad.xml:6: ", "hop_chan")

    def test_document_type(self):
        self.refused('<!DOCTYPE a [<!ENTITY b "c">]>\n<fwe_ui_wayfind/>\n', "bad.xml:1: ", "document type")

    def test_unknown_root(self):
        self.refused("<weather/>\n", "bad.xml:1: unknown element <weather> at the root")

    def test_unknown_record(self):
        self.refused(f"<fwe_ui_wayfind>\n\n<{CL}hop_chan_date/>\n</fwe_ui_wayfind>\n", "bad.xml:3: unknown element <fwe_cl_wayfind_hop_chan_date> in")

    def test_unknown_field(self):
        self.refused(self.hop_chan("<hop_chan>\n<hop_idd>1</hop_idd>\n</hop_chan>"), "bad.xml:4: unknown element <hop_idd> in <hop_chan>")

    def test_unknown_enumerator(self):
        self.refused(self.hop_chan("<probe><rx_state><WAYFIND_UI_UP/></rx_state></probe>"), "bad.xml:3: unknown element <WAYFIND_UI_UP> in <rx_state>")

    def test_field_that_stands_twice(self):
        self.refused(self.hop_chan("<dscp_str>ef</dscp_str>\n<dscp_str>ef</dscp_str>"), "bad.xml:4: a second <dscp_str> in")

    def test_second_value_of_an_enum(self):
        for second in (UNREACHABLE, REACHABLE, CL + "hop_chan_state_e"):
            self.refused(self.hop_chan(f"<probe><rx_state><{REACHABLE}/>\n<{second}/></rx_state></probe>"),
                         f"bad.xml:4: a second value, <{second}>, in <rx_state>; remove one of them")

    def test_flag_that_stands_twice(self):
        self.refused(self.hop_chan(f"<hop_chan><flags_show><{ACK}/><{ADDR_CHANGE}/>\n<{ACK}/></flags_show></hop_chan>"),
                     f"bad.xml:4: a second <{ACK}> in <flags_show>; remove one of them")

    def test_name_of_the_set_in_place_of_a_flag(self):
        self.refused(self.hop_chan(f"<hop_chan><flags_show><{CL}hop_chan_flags/></flags_show></hop_chan>"),
                     f"bad.xml:3: unknown element <{CL}hop_chan_flags> in <flags_show>")

    def test_second_record_in_a_message(self):
        record = f"<{CL}hop_chan_data/>"
        self.refused(f"<{CL}hop_chan_msg>\n{record}\n{record}</{CL}hop_chan_msg>\n",
                     f"bad.xml:3: a second {record.replace('/', '')} in <{CL}hop_chan_msg>; remove one of them")

    def test_name_of_a_value_as_text(self):
        self.refused(self.hop_chan(f"<probe>\n<rx_state> {REACHABLE} </rx_state></probe>"),
                     f'bad.xml:4: text in <rx_state>, "{REACHABLE}"; write the value as an element, like <{REACHABLE}/>')

    def test_number_of_a_value(self):
        self.refused(self.hop_chan("<probe><rx_state>1</rx_state></probe>"),
                     f'bad.xml:3: text in <rx_state>, "1"; write the value as an element, like <{UNREACHABLE}/>')

    def test_text_beside_a_value(self):
        self.refused(self.hop_chan(f"<probe><rx_state><{REACHABLE}/>1</rx_state></probe>"), 'bad.xml:3: text in <rx_state>, "1"')

    def test_text_inside_a_value(self):
        self.refused(self.hop_chan(f"<probe><rx_state><{REACHABLE}>1</{REACHABLE}></rx_state></probe>"),
                     f'bad.xml:3: text in <{REACHABLE}>, "1"; remove it')

    def test_name_of_a_flag_as_text(self):
        self.refused(self.hop_chan(f"<hop_chan><flags_show>{ACK}</flags_show></hop_chan>"),
                     f'bad.xml:3: text in <flags_show>, "{ACK}"; write flags as elements, like <{ACK}/>')

    def test_text_between_the_fields_of_a_record(self):
        self.refused(self.hop_chan("<hop_chan>\n<hop_id>1</hop_id>\n dscp 46 \n<sa_id>2</sa_id></hop_chan>"),
                     'bad.xml:3: text in <hop_chan>, "dscp 46"; write fields as elements, like <hop_chan_id>')

    def test_marked_text_in_a_record(self):
        self.refused(self.hop_chan("<hop_chan><![CDATA[46]]></hop_chan>"), 'bad.xml:3: text in <hop_chan>, "46"')

    def test_text_between_records(self):
        self.refused(f"<fwe_ui_wayfind>\n<{CL}hop_chan_data/>\nhello\n</fwe_ui_wayfind>\n",
                     'bad.xml:1: text in <fwe_ui_wayfind>, "hello"; remove it')

    def test_text_behind_many_records(self):
        many = "".join(f"<{CL}hop_chan_data><dscp_str>{number}</dscp_str></{CL}hop_chan_data>\n" for number in range(20_000))
        self.refused(f"<fwe_ui_wayfind>\n{many}x</fwe_ui_wayfind>\n", 'bad.xml:1: text in <fwe_ui_wayfind>, "x"')

    def test_record_that_the_message_around_it_does_not_carry(self):
        self.refused(f"<{CL}hop_chan_msg>\n<{CL}channel_data/></{CL}hop_chan_msg>\n",
                     f"bad.xml:2: unknown element <{CL}channel_data> in <{CL}hop_chan_msg>; correct or remove it")

    def test_pipe_is_not_waited_for(self):
        folder = self.folder / "data"
        folder.mkdir(exist_ok=True)
        os.mkfifo(folder / "pipe.xml")
        self.assert_fails(run("agent", "--listen", self.socket, "--data", folder), "pipe.xml: no regular file")

    def test_text_that_is_not_printable(self):
        self.refused(self.hop_chan("<probe>\u0085</probe>"), 'bad.xml:3: text in <probe>, "\\xc2\\x85"')

    def test_namespace(self):
        self.refused(f'<fwe_ui_wayfind xmlns="weather"><{CL}hop_chan_data/></fwe_ui_wayfind>\n',
                     "bad.xml:1: <fwe_ui_wayfind> stands in a namespace; remove its xmlns")

    def test_attribute(self):
        self.refused(self.hop_chan(f'<probe>\n<rx_state state="2" unit="k"><{REACHABLE}/></rx_state></probe>'),
                     'bad.xml:4: attribute "unit" of <rx_state>; remove it')

    def complexes(self, inside):
        return f"<fwe_dp_wayfind_debug_data>\n{inside}</fwe_dp_wayfind_debug_data>\n"

    def test_element_that_the_counter_of_its_array_cannot_count(self):
        self.refused(self.complexes("<dbg_per_complex/>\n" * 256),
                     "bad.xml:257: one more <dbg_per_complex> in <fwe_dp_wayfind_debug_data>, which holds up to 255; remove it")

    def test_counter_that_tells_another_number_than_there_are_elements(self):
        for told in ("3", "banana", "-2", "", "2 2", "2\n7", "0x3", "18446744073709551618"):
            self.refused(self.complexes(f"\n<num_complexes>{told}</num_complexes>\n<dbg_per_complex/>\n<dbg_per_complex/>\n"),
                         f'bad.xml:3: <num_complexes> is "{told.partition(chr(10))[0]}" and there are 2 of <dbg_per_complex>; correct it or leave it out')

    def test_counter_of_an_array_without_elements(self):
        self.refused(self.complexes("<num_complexes>1</num_complexes>"), 'bad.xml:2: <num_complexes> is "1" and there are 0 of')

    def test_counter_in_an_element_of_an_array(self):
        self.refused(self.complexes("<dbg_per_complex/>\n<dbg_per_complex>\n<num_fwes>2</num_fwes><dbg_setting/></dbg_per_complex>"),
                     'bad.xml:4: <num_fwes> is "2" and there are 1 of <dbg_setting>')

    def test_number_out_of_range(self):
        self.refused(self.hop_chan("<hop_chan>\n<dscp>256</dscp>\n</hop_chan>"), 'bad.xml:4: <dscp> is "256"', "out of its range")

    def test_text_in_place_of_a_number(self):
        self.refused(self.hop_chan("<stats>\n<send_probes>many</send_probes>\n</stats>"), 'bad.xml:4: <send_probes> is "many"')

    def test_text_longer_than_its_field(self):
        self.refused(self.hop_chan("<dscp_str>123456789</dscp_str>"), 'bad.xml:3: <dscp_str> is "123456789": longer than its field')

    def test_element_of_an_array(self):
        self.refused(f"<{CL}channel_data><chan><path>\n<path_id>1</path_id>\n<path_id>x</path_id>\n</path></chan></{CL}channel_data>",
                     'bad.xml:3: <path_id[2]> is "x"')

    def test_lines_beyond_65535(self):
        for inside, told in (("<dscp_str>\n123456789</dscp_str>", "<dscp_str> is"), ("<hop_chan><hop_idd/></hop_chan>", "unknown element <hop_idd>")):
            self.refused(self.hop_chan("\n" * 70_000 + inside), f"bad.xml:70003: {told}")

    def test_second_record_of_a_kind_that_a_show_holds_once(self):
        self.refused(f"<fwe_ui_wayfind>{'<fwe_pal_wayfind_site_prefix_data/>' * 2}</fwe_ui_wayfind>", "bad.xml: one more <fwe_pal_wayfind_site_prefix_data>")

    def test_tunnel_without_its_name(self):
        self.refused(f"<fwe_ui_wayfind><{CL}auto_tunnel/></fwe_ui_wayfind>", "bad.xml: 1 of <fwe_cl_wayfind_auto_tunnel> and 0 of")

    def test_error_in_the_last_of_many_files(self):
        Data(2).write(self.folder)
        self.refused("<weather/>\n", "zzz.xml:1: unknown element", name="zzz.xml")


class DataForms(Case):
    def shown(self, text, subject="hop-chan"):
        (self.folder / "data.xml").write_text(text)
        self.start_agent(data=self.folder)
        return self.show(subject, "--format", "xml").stdout

    def test_record_may_be_the_root(self):
        self.assertIn("<dscp_str>ef</dscp_str>", self.shown(f"<{CL}hop_chan_data><dscp_str>ef</dscp_str></{CL}hop_chan_data>"))

    def test_what_is_not_given_keeps_its_default(self):
        shown = self.shown(f"<{CL}hop_chan_data/>")
        self.assertIn("<num_hop_chans>1</num_hop_chans>", shown)
        self.assertIn("<WAYFIND_UI_HOP_CHAN_STATE_UNREACHABLE/>", shown)
        self.assertIn("<hop_id>0</hop_id>", shown)

    def test_show_without_entries_tells_their_count(self):
        shown = self.shown("<fwe_ui_wayfind/>")
        self.assertIn("<num_hop_chans>0</num_hop_chans>", shown)
        self.assertNotIn("hop_chan_msg", shown)

    def test_comments_and_blanks_may_stand_between_elements(self):
        shown = self.shown(f"<{CL}hop_chan_data>\n<!-- up --><probe>\t<rx_state> <{REACHABLE}/>\r\n</rx_state></probe></{CL}hop_chan_data>")
        self.assertIn(f"<rx_state><{REACHABLE}/>", shown.replace("\n", ""))

    def test_set_holds_several_flags(self):
        shown = self.shown(f"<{CL}hop_chan_data><hop_chan><flags_show><{ACK}/><{ADDR_CHANGE}/></flags_show></hop_chan></{CL}hop_chan_data>")
        self.assertIn(f"<flags_show><{ADDR_CHANGE}/><{ACK}/></flags_show>", shown.replace("\n", ""))

    def test_as_many_elements_as_their_counter_can_count_come_through(self):
        for told in ("", "<num_complexes> 255 </num_complexes>", "<num_complexes>0xff</num_complexes>"):
            data = f"<fwe_dp_wayfind_debug_data>{told}{'<dbg_per_complex/>' * 255}</fwe_dp_wayfind_debug_data>"
            shown = self.shown(data, "dp-debug")
            self.assertEqual((shown.count("<dbg_per_complex>"), shown.count("<num_complexes>255</num_complexes>")), (255, 1))
            self.doCleanups()
            self.setUp()

    def test_numbers_may_be_hexadecimal(self):
        self.assertIn("<flags>31</flags>", self.shown(f"<{CL}hop_chan_data><hop_chan><flags> 0x1f </flags></hop_chan></{CL}hop_chan_data>"))
