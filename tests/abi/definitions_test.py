"""The ledger of definitions: it stands for what is built, and refuses what peers could not notice or live with."""
import copy
import os
import unittest

import definitions
from subject import LIBRARY, facts

NEW = "0" * 31 + "1"  # a definition hash that no type has


class Ledger(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.built = list(definitions.built_types(LIBRARY, os.environ["WAYFIND_SCHEMA_JSON"]))
        cls.ledger = definitions.read_ledger()

    def changed(self, name, change, definition=None):
        """The types with one of them changed, and with another definition hash if one is given."""
        types = copy.deepcopy(self.built)
        found = next(type_ for type_ in types if type_.name == name)
        change(found)
        found.definition = definition or found.definition
        return types

    def assert_refused(self, types, words):
        found = definitions.problems(self.ledger, types)
        self.assertEqual(len(found), 1, found)
        self.assertIn(words, found[0])

    def assert_costs_its_row(self, types, name):
        """Refused only until the ledger has the new row, which changes no other."""
        self.assertEqual(definitions.problems(self.ledger, types), [f"{name}: the ledger is behind; {definitions.UPDATE}"])
        self.assertEqual(list(definitions.refusals(self.ledger, types)), [])
        before = definitions.LEDGER.read_text()
        after = definitions.updated(before, types)
        self.assertEqual(sum(line not in before.splitlines() for line in after.splitlines()), 1)
        self.assertEqual(definitions.problems({line.split()[1]: line for line in after.splitlines()[2:]}, types), [])

    def test_stands_for_the_built_library_in_its_order(self):
        self.assertEqual(definitions.problems(self.ledger, self.built), [])
        self.assertEqual(list(self.ledger), [type_.name for type_ in self.built])
        self.assertEqual(len(self.built), 56 + 11 + 1 + 28)

    def test_stands_for_the_facts_as_well(self):
        self.assertEqual([type_.row() for type_ in definitions.told_types(facts())], list(self.ledger.values()))

    def test_every_type_that_changes_needs_a_new_hash(self):
        for type_ in self.built:
            grows = ["another"]
            with self.subTest(type_.name):
                if type_.kind in ("enum", "flags"):
                    types = self.changed(type_.name, lambda t: t.variants[0].extend(grows))
                else:
                    types = self.changed(type_.name, lambda t: t.variants.append(grows))
                self.assert_refused(types, type_.name + ": has changed and its definition hash has not; give it a new one")

    def test_a_new_enum_value_or_flag_costs_its_row_and_a_new_hash(self):
        for name in ("fwe_cl_wayfind_select_ui_type_e", "fwe_cl_wayfind_hop_chan_flags"):
            self.assert_costs_its_row(self.changed(name, lambda t: t.variants[0].append("WAYFIND_UI_NEW"), NEW), name)

    def test_a_value_in_front_of_another_or_renamed_is_refused(self):
        name = "fwe_cl_wayfind_select_ui_type_e"
        for change in (lambda values: values.insert(0, "WAYFIND_UI_NEW"), lambda values: values.reverse(), lambda values: values.pop(),
                       lambda values: values.__setitem__(2, "WAYFIND_UI_NEW")):
            self.assert_refused(self.changed(name, lambda t: change(t.variants[0]), NEW), name + ": variant 0 is not what it was")

    def test_fields_in_a_new_variant_cost_their_row_and_a_new_hash(self):
        name = "fwe_cl_wayfind_hop_chan_data"
        self.assert_costs_its_row(self.changed(name, lambda t: t.variants.append(["moves value u_int32 4"]), NEW), name)

    def test_a_listed_variant_of_a_record_stays_as_it_is_whatever_the_hash(self):
        name = "fwe_cl_wayfind_chan_st"
        old = next(type_ for type_ in self.built if type_.name == name).variants
        self.assertEqual(old[1], ["in_burst value u_int8 1", "enable_burst value u_int8 1"])
        for new in (["in_bursts value u_int8 1", old[1][1]], ["in_burst object u_int8 1", old[1][1]], ["in_burst value u_int16 1", old[1][1]],
                    ["in_burst value u_int8 2", old[1][1]], old[1][::-1], old[1][:1], old[1] + ["late value u_int8 1"]):
            self.assert_refused(self.changed(name, lambda t: t.variants.__setitem__(1, new), NEW), name + ": variant 1 is not what it was")
        self.assert_refused(self.changed(name, lambda t: t.variants.pop(), NEW), name + ": variant 3 is not what it was")

    def test_a_message_that_carries_another_record_is_refused(self):
        name = "fwe_cl_wayfind_hop_chan_msg"
        self.assert_refused(self.changed(name, lambda t: t.variants.__setitem__(0, ["fwe_cl_wayfind_mem_st"]), NEW), name + ": variant 0")

    def test_a_type_that_is_gone_or_of_another_kind_is_refused(self):
        name = "fwe_cl_wayfind_mem_st"
        self.assert_refused([type_ for type_ in self.built if type_.name != name], name + ": the record is gone")
        self.assert_refused(self.changed(name, lambda t: setattr(t, "kind", "message")), name + ": the record is gone")

    def test_a_new_type_costs_its_row_and_a_hash_of_its_own(self):
        new = definitions.Type("record", "fwe_cl_wayfind_new_st", NEW, [["width value u_int16 2"]])
        self.assert_costs_its_row(self.built + [new], new.name)
        new.definition = self.built[0].definition
        self.assert_refused(self.built + [new], f"{new.name}: has the definition hash of {self.built[0].name}")

    def test_an_embedded_record_grows_without_a_row_of_its_parent(self):
        self.assertIn("chan object fwe_cl_wayfind_chan_st -", next(t for t in self.built if t.name == "fwe_cl_wayfind_channel_data").variants[0])


if __name__ == "__main__":
    unittest.main()
