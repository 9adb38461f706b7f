"""The JSON of every message against the generated schema, by a validator that knows nothing of either."""
import copy
import json
import os
import subprocess
import unittest
import warnings

with warnings.catch_warnings():
    warnings.simplefilter("ignore")
    import jsonschema

CL = "fwe_cl_wayfind_"


def written(what):
    return json.loads(subprocess.check_output([os.environ["WAYFIND_WRITE_JSON"], what]))


class JsonSchema(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.schema = written("schema")
        cls.messages = written("messages")
        cls.validator = jsonschema.Draft202012Validator(cls.schema)

    def message(self, name):
        return copy.deepcopy(next(m for m in self.messages if m["message"] == CL + name))

    def accepts(self, message):
        return self.validator.is_valid([message])

    def refuses_with(self, name, change):
        message = self.message(name)
        self.assertTrue(self.accepts(message))
        change(message[[key for key in message if key != "message"][0]])
        self.assertFalse(self.accepts(message), message)

    def test_is_a_schema(self):
        jsonschema.Draft202012Validator.check_schema(self.schema)

    def test_carries_the_version_of_the_form(self):
        self.assertEqual(self.schema["$id"], "urn:wayfind:show:1")

    def test_holds_for_every_message(self):
        self.assertEqual(len({message["message"] for message in self.messages}), 28)
        self.assertEqual(len(self.messages), 28 * 2 * 2 + 3)
        for message in self.messages:
            with self.subTest(message["message"]):
                self.validator.validate([message])
        self.validator.validate(self.messages)

    def test_messages_and_records_are_no_others(self):
        message = self.message("intf_sum_msg")
        message["message"] = CL + "intf_data_msg"
        self.assertFalse(self.accepts(message))
        message["message"] = CL + "new_msg"
        self.assertFalse(self.accepts(message))
        both = self.message("auto_tunnel_show")
        del both[CL + "auto_tunnel_misc"]
        self.assertFalse(self.accepts(both))

    def test_fields_of_the_oldest_variant_are_there_and_unknown_ones_are_not(self):
        self.refuses_with("enforce_hop_msg", lambda record: record.pop("hop_id"))
        self.refuses_with("enforce_hop_msg", lambda record: record.update(other=1))
        message = self.message("enforce_hop_msg")
        del message[CL + "enforce_hop"]["create_ts_msec"]
        self.assertTrue(self.accepts(message))

    def test_values_are_of_their_kinds(self):
        self.refuses_with("intf_data_msg", lambda record: record.update(zero_sla_type=256))
        self.refuses_with("intf_data_msg", lambda record: record.update(fwe_if_h=-1))
        self.refuses_with("intf_data_msg", lambda record: record.update(fwe_if_h=1 << 32))
        self.refuses_with("intf_data_msg", lambda record: record.update(fwe_if_h="1"))
        self.refuses_with("intf_data_msg", lambda record: record.update(plr_type="ACTIVE"))
        self.refuses_with("intf_data_msg", lambda record: record.update(plr_type=3))
        self.refuses_with("intf_data_msg", lambda record: record.update(color="x" * 33))
        self.refuses_with("nb_channel_msg", lambda record: record["mem"].update(ppe_addr=1))
        self.refuses_with("nb_channel_msg", lambda record: record["mem"].update(ppe_addr="01"))
        self.refuses_with("debug_msg", lambda record: record.update(is_none=1))
        self.refuses_with("enforce_hop_msg", lambda record: record.update(linktype="1"))
        self.refuses_with("hop_chan_msg", lambda record: record["hop_chan"].update(flags_show=["ACK"]))
        self.refuses_with("hop_chan_msg", lambda record: record["hop_chan"].update(flags_show=[8]))
        self.refuses_with("multi_nh_map_msg", lambda record: record.update(remote_ip="10.0.0.1"))
        self.refuses_with("multi_nh_map_msg", lambda record: record.update(remote_ip={"family": 9}))

    def test_arrays_hold_their_elements_and_counters_are_left_out(self):
        self.refuses_with("channel_msg", lambda record: record["chan"]["path"].update(path_id=["7"]))
        self.refuses_with("channel_msg", lambda record: record["chan"]["path"].update(num_hops=3))

    def test_states_are_bytes(self):
        self.refuses_with("intf_data_msg", lambda record: record.update({"@states": {"color": 256}}))
        self.refuses_with("intf_data_msg", lambda record: record.update({"@states": {"color": "2"}}))


if __name__ == "__main__":
    unittest.main(verbosity=2)
