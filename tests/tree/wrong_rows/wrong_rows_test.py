#!/usr/bin/env python3
"""A wrong row does not compile, and the error names the sentence that it breaks, the type and the row.

Each case makes one row wrong, either of right.cpp or of the tree's own tables, and compiles what comes of it.

Usage: wrong_rows_test.py SCRATCH_FOLDER COMPILER...
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[2]
SCRATCH = Path(sys.argv[1]).resolve()
COMPILERS = sys.argv[2:]

RIGHT = "tests/tree/wrong_rows/right.cpp"
ALL_TABLES = "model/order_checks.cpp"
ENGINE_TABLES = "model/rows.h"

# (what is wrong, what stands in the table, what is written instead, sentence, type, row)
ROWS = [
    (
        "an_array_of_u_int64",
        'value_array("marks", u_int16, 0,',
        'value_array("marks", u_int64, 0,',
        "the elements of a value array are u_int8, u_int16 or u_int32", "trail_st", "marks",
    ),
    (
        "an_array_of_link_types",
        'value_array("marks", u_int16, 0,',
        'value_array("marks", link_type, 0,',
        "the elements of a value array are u_int8, u_int16 or u_int32", "trail_st", "marks",
    ),
    (
        "a_row_between_counter_and_array",
        'value_array("marks",',
        'value("neighbour", u_int32, 0, "A value."), value_array("marks",',
        "a counter stands directly in front of its array", "trail_st", "num_marks",
    ),
    (
        "an_array_without_a_counter",
        'counter("num_marks", u_int32, 0, "A counter."),',
        "",
        "an array stands directly behind its counter", "trail_st", "marks",
    ),
    (
        "an_array_of_records_behind_a_value",
        'counter("num_stages",',
        'value("num_stages",',
        "an array stands directly behind its counter", "stages_st", "stages",
    ),
    (
        "a_counter_without_an_array",
        'text("name", 12, 1, "A text."),',
        'counter("num_names", u_int32, 1, "A counter."),',
        "a counter stands directly in front of its array", "trail_st", "num_names",
    ),
    (
        "a_counter_of_u_int16",
        'counter("num_marks", u_int32,',
        'counter("num_marks", u_int16,',
        "a counter is a u_int8 or u_int32", "trail_st", "num_marks",
    ),
    (
        "an_array_of_a_later_variant",
        'text("name", 12, 1, "A text."),',
        'counter("num_names", u_int8, 1, "A counter."), value_array("names", u_int8, 1, "An array."),',
        "an array is of variant 0", "trail_st", "names",
    ),
    (
        "a_text_of_size_0",
        'text("name", 12, 1,',
        'text("name", 0, 1,',
        "a text has room for a character", "trail_st", "name",
    ),
    (
        "a_variant_that_goes_down",
        'text("name", 12, 1, "A text."),',
        'text("name", 12, 1, "A text."), value("rating", u_int8, 0, "A value."),',
        "a variant never goes down from row to row", "trail_st", "rating",
    ),
    (
        "a_variant_that_is_left_out",
        'text("name", 12, 1,',
        'text("name", 12, 2,',
        "a variant is at most one more than that of the row before", "trail_st", "name",
    ),
    (
        "a_record_that_begins_with_variant_1",
        'value("altitude", u_int32, 0,',
        'value("altitude", u_int32, 1,',
        "the first field of a record is of variant 0", "camp_st", "altitude",
    ),
    (
        "a_fifth_variant",
        'text("name", 12, 1, "A text."),',
        "".join(f'value("later{v}", u_int8, {v}, "A value."),' for v in range(1, 5)),
        "a record has at most max_variants variants", "trail_st", "later4",
    ),
    (
        "a_value_that_is_an_address",
        'object("address", ip_address,',
        'value("address", ip_address,',
        "a value is a u_int8, u_int16, u_int32, u_int64, ork_boolean, link_type or enum", "trail_st", "address",
    ),
    (
        "an_object_that_is_a_number",
        'object("address", ip_address,',
        'object("address", u_int32,',
        "an object is a record, a flag set or an ip_address", "trail_st", "address",
    ),
    (
        "a_record_that_holds_itself",
        'value("altitude", u_int32, 0, "A value.", column | count_of("trail_msg")),',
        'object("self", camp_st, 0, "A record."),',
        "a record does not hold itself", "camp_st", "self",
    ),
    (
        "a_record_without_fields",
        'value("altitude", u_int32, 0, "A value.", column | count_of("trail_msg")),',
        "",
        "a record has a field", "camp_st", "",
    ),
    (
        "a_field_name_that_is_too_long",
        'value("altitude",',
        'value("a_name_of_twenty8_characters",',
        "the name of a field has at most max_field_name characters", "camp_st", "a_name_of_twenty8_characters",
    ),
    (
        "a_field_name_used_twice",
        'value("length",',
        'value("marks",',
        "the name of a field stands once in its record", "trail_st", "marks",
    ),
    (
        "a_record_that_is_too_large",
        'text("name", 12, 1,',
        'text("name", 65400, 1,',
        "a body and its state block each have less than 64 KiB", "trail_st", "",
    ),
    (
        "an_embedded_record_that_stands_behind_its_user",
        "{&camp_st, &stages_st, &trail_st}",
        "{&stages_st, &trail_st, &camp_st}",
        "a record inside another, or an element, stands in front of its user in model/order.h", "stages_st", "stages",
    ),
    (
        "an_embedded_record_that_is_not_listed",
        "{&camp_st, &stages_st, &trail_st}",
        "{&trail_st}",
        "a record inside another, or an element, stands in front of its user in model/order.h", "trail_st", "camp",
    ),
    (
        "an_enum_that_is_not_listed",
        "enums[] = {&weather_e}",
        "enums[] = {nullptr}",
        "the enum of a field is listed in model/order.h", "trail_st", "weather",
    ),
    (
        "a_flag_set_that_is_not_listed",
        "flag_sets[] = {&gear_flags}",
        "flag_sets[] = {nullptr}",
        "the flag set of a field is listed in model/order.h", "trail_st", "gear",
    ),
    (
        "a_message_whose_record_is_not_listed",
        "{&camp_st, &stages_st, &trail_st}",
        "{&camp_st, &trail_st}",
        "the record of a message is listed in model/order.h", "trail_msg", "stages_st",
    ),
    (
        "a_message_that_carries_a_record_twice",
        "{&trail_st, &stages_st},",
        "{&trail_st, &trail_st},",
        "a message carries a record once", "trail_msg", "trail_st",
    ),
    (
        "a_message_that_repeats_without_a_key",
        "    {&stages_st},\n    no_key};",
        "    {&stages_st}};",
        "a message that repeats in a bundle has a key, or says no_key", "trail_response", "stages_msg",
    ),
    (
        "a_key_of_a_field_that_is_not_there",
        'key("camp.altitude", "name")',
        'key("camp.altitud", "name")',
        "a path of a key leads to a value, a text or an address in a record of its message", "trail_msg", "camp.altitud",
    ),
    (
        "a_key_of_a_whole_record",
        'key("camp.altitude", "name")',
        'key("name", "camp")',
        "a path of a key leads to a value, a text or an address in a record of its message", "trail_msg", "camp",
    ),
    (
        "a_key_that_leads_into_an_array",
        'key("camp.altitude", "name")',
        'key("stages.altitude")',
        "a path of a key leads to a value, a text or an address in a record of its message", "trail_msg", "stages.altitude",
    ),
    (
        "a_key_that_goes_on_behind_a_value",
        'key("camp.altitude", "name")',
        'key("camp.altitude.metres")',
        "a path of a key leads to a value, a text or an address in a record of its message", "trail_msg", "camp.altitude.metres",
    ),
    (
        "a_count_of_what_is_no_message",
        'count_of("trail_msg")',
        'count_of("trail_st")',
        "what a field counts is a message that model/order.h lists", "camp_st", "altitude",
    ),
    (
        "a_count_in_a_record_that_no_message_carries",
        "{&camp_st},",
        "{&stages_st},",
        "a field that tells how many messages there are stands in a record that a message carries", "camp_st", "altitude",
    ),
    (
        "a_count_of_u_int64",
        'value("length", u_int64, 0, "A value.", grows)',
        'value("length", u_int64, 0, "A value.", entries)',
        "a field that tells how many messages there are is a value of u_int32", "trail_st", "length",
    ),
    (
        "a_text_that_grows",
        'text("name", 12, 1, "A text."),',
        'text("name", 12, 1, "A text.", grows),',
        "a field that grows is a value of u_int8, u_int16, u_int32 or u_int64", "trail_st", "name",
    ),
    (
        "a_member_of_a_bundle_that_is_a_record",
        "repeatedly(camp_msg)",
        "repeatedly(camp_st)",
        "a member of a bundle is a message", "trail_response", "camp_st",
    ),
    (
        "a_member_of_a_bundle_that_is_not_listed",
        "{&trail_msg, &camp_msg, &stages_msg}",
        "{&trail_msg, &camp_msg}",
        "a member of a bundle is listed in model/order.h", "trail_response", "stages_msg",
    ),
    (
        "a_member_that_stands_twice_in_its_bundle",
        "repeatedly(camp_msg)",
        "repeatedly(trail_msg)",
        "a member stands once in its bundle", "trail_response", "trail_msg",
    ),
    (
        "a_type_name_used_twice",
        '"camp_msg",',
        '"camp_st",',
        "the name of a type stands once", "camp_st", "camp_st",
    ),
    (
        "a_type_name_that_is_too_long",
        '"camp_msg",',
        f'"{"camp_" * 13}",',
        "the name of a type has at most max_type_name characters", "camp_" * 13, "",
    ),
    (
        "a_value_name_used_twice_in_its_enum",
        '"WEATHER_WET"',
        '"WEATHER_DRY"',
        "the name of a value stands once in all enums and flag sets", "weather_e", "weather_e",
    ),
    (
        "a_value_name_used_by_a_flag_set",
        '"GEAR_TENT"',
        '"WEATHER_DRY"',
        "the name of a value stands once in all enums and flag sets", "gear_flags", "weather_e",
    ),
    (
        "a_value_name_that_is_too_long",
        '"WEATHER_WET"',
        f'"{"WEATHER_" * 6}"',
        "the name of a value has at most max_value_name characters", "weather_e", "WEATHER_" * 6,
    ),
    (
        "a_luid_used_twice",
        '.luid = "00000000000000000000000000000007"',
        '.luid = "00000000000000000000000000000003"',
        "a LUID stands once", "camp_msg", "camp_st",
    ),
    (
        "a_luid_of_a_bundle_used_twice",
        '.commit = "0000000000000000000000000000000a"',
        '.commit = "00000000000000000000000000000006"',
        "a LUID stands once", "trail_response", "trail_msg",
    ),
    (
        "a_luid_that_is_too_short",
        '.luid = "00000000000000000000000000000007"',
        '.luid = "0000000000000000000000000000007"',
        "a LUID has 32 lower-case hexadecimal digits", "camp_msg", "0000000000000000000000000000007",
    ),
    (
        "a_definition_hash_used_twice",
        '.definition = "10000000000000000000000000000005"',
        '.definition = "10000000000000000000000000000001"',
        "a definition hash stands once", "weather_e", "trail_st",
    ),
    (
        "a_definition_hash_with_capitals",
        '.definition = "10000000000000000000000000000005"',
        '.definition = "1000000000000000000000000000000A"',
        "a definition hash has 32 lower-case hexadecimal digits", "trail_st", "1000000000000000000000000000000A",
    ),
]

# (what is wrong, what stands in the table, what is written instead, sentence, type, row, number told, number given)
NUMBERS = [
    (
        "a_used_length", ".used = 144, .slop = 32", ".used = 140, .slop = 32",
        "the used length told is the one that the fields give", "trail_st", "variant 0", 140, 144,
    ),
    (
        "a_slop", ".used = 156, .slop = 20", ".used = 156, .slop = 28",
        "the slop told is the one that the fields give", "trail_st", "variant 1", 28, 20,
    ),
    (
        "a_body_size", ".body = 176", ".body = 168",
        "the body size told is the one that the fields give", "trail_st", "variant 1", 168, 176,
    ),
    (
        "a_state_size", ".body = 176, .state = 24", ".body = 176, .state = 25",
        "the state size told is the one that the fields give", "trail_st", "variant 1", 25, 24,
    ),
    (
        "an_end_of_field_numbers", ".bound = 9", ".bound = 8",
        "the field numbers told end where those of the fields do", "trail_st", "variant 1", 8, 9,
    ),
    (
        "a_size_in_the_manifest", "Manifest{.size = 160}", "Manifest{.size = 156}",
        "the size told for the manifest is the one that the fields give", "trail_st", "", 156, 160,
    ),
    (
        "a_variant_more", 'text("name", 12, 1, "A text."),', 'text("name", 12, 0, "A text."),',
        "a record is told of in each of its variants", "trail_st", "", 2, 1,
    ),
]

# Rows of the tree's own tables: (what is wrong, table, old, new, file that is compiled, sentence, type, row)
OWN_ROWS = [
    (
        "an_array_of_u_int64", "model/subjects/channels.h",
        'value_array("path_id",  u_int32,', 'value_array("path_id",  u_int64,', ENGINE_TABLES,
        "the elements of a value array are u_int8, u_int16 or u_int32", "fwe_cl_wayfind_sel_lb_path_st", "path_id",
    ),
    (
        "a_told_number", "model/subjects/hop_channels.h",
        ".used = 48, .slop = 104, .body = 56,", ".used = 48, .slop = 104, .body = 64,", ENGINE_TABLES,
        "the body size told is the one that the fields give", "fwe_cl_wayfind_hop_chan_st", "variant 0",
    ),
    (
        "a_luid_used_twice", "model/subjects/interfaces.h",
        "3a63956cd7e37a9e2416e98ceef4976c", "62b4e4a48a0afce6b4e24db734e1ab0b", ALL_TABLES,
        "a LUID stands once", "fwe_cl_wayfind_intf_sum", "fwe_cl_wayfind_intf_data",
    ),
    (
        "an_order_in_which_a_user_stands_first", "model/order.h",
        "    &mem_st,\n    &inst_st,", "    &inst_st,", ALL_TABLES,
        "a record inside another, or an element, stands in front of its user in model/order.h",
        "fwe_cl_wayfind_select_policy", "mem",
    ),
]


def compile_file(compiler, file, *folders):
    includes = [f"-I{folder}" for folder in folders]
    done = subprocess.run([compiler, "-std=c++20", "-x", "c++", "-fsyntax-only", *includes, str(file)],
                          capture_output=True, text=True, env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"})
    return done.returncode, done.stderr


def changed(name, old, new):
    text = (ROOT / name).read_text()
    assert text.count(old) == 1, f"{name}: {old!r} stands {text.count(old)} times"
    return text.replace(old, new)


class Rows(unittest.TestCase):
    def expect_refused(self, file, folders, told, numbers=()):
        for compiler in COMPILERS:
            with self.subTest(compiler):
                code, errors = compile_file(compiler, file, *folders)
                self.assertNotEqual(code, 0, "it compiles")
                texts = [f'"{text}"' for text in told if text]
                lines = [line for line in errors.splitlines() if all(text in line for text in texts)]
                self.assertTrue(lines, errors)
                for number in numbers:
                    self.assertRegex(lines[0], rf"\b{number}\b")

    def refuse(self, case, old, new, told, numbers=()):
        file = SCRATCH / f"{case}.cpp"
        file.write_text(changed(RIGHT, old, new))
        self.expect_refused(file, [ROOT], told, numbers)

    def refuse_own(self, case, name, old, new, compiled, told):
        overlay = SCRATCH / f"own_{case}"
        (overlay / name).parent.mkdir(parents=True, exist_ok=True)
        (overlay / name).write_text(changed(name, old, new))
        file = overlay / "compiled.cpp"
        file.write_text(f'#include "{compiled}"\n')
        self.expect_refused(file, [overlay, ROOT], told)

    def test_the_right_tables_compile(self):
        for compiler in COMPILERS:
            for name in (RIGHT, ALL_TABLES):
                with self.subTest(f"{compiler} {name}"):
                    self.assertEqual(compile_file(compiler, ROOT / name, ROOT), (0, ""))

    def test_every_sentence_has_a_row_that_breaks_it(self):
        said = set()
        for name in ("model/checks.h", "model/order_checks.h"):
            # Sentences are the literals of more than three words.
            said |= {text for text in re.findall(r'"([a-z][^"]*)"', (ROOT / name).read_text(), flags=re.I)
                     if text.count(" ") > 2}
        self.assertEqual(said, {case[3] for case in ROWS + NUMBERS})


def add_cases():
    def add(name, run):
        assert not hasattr(Rows, name), name
        setattr(Rows, name, run)

    for case, old, new, *told in ROWS:
        add(f"test_{case}", lambda self, c=case, o=old, n=new, t=told: self.refuse(c, o, n, t))
    for case, old, new, sentence, record, row, *numbers in NUMBERS:
        add(f"test_{case}_told_wrong", lambda self, c=case, o=old, n=new, t=[sentence, record, row], m=numbers:
            self.refuse(c, o, n, t, m))
    for case, name, old, new, compiled, *told in OWN_ROWS:
        add(f"test_own_tables_{case}", lambda self, c=case, f=name, o=old, n=new, x=compiled, t=told:
            self.refuse_own(c, f, o, n, x, t))


add_cases()

if __name__ == "__main__":
    SCRATCH.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1], verbosity=2)
