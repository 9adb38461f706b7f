"""The schema, and the values that tests send through two processes."""
import functools
import ipaddress
import json
import os
import random
import subprocess
from xml.sax.saxutils import escape

CL = "fwe_cl_wayfind_"

# Counts that the agent fills in: record, field, and the messages counted; none: all that may repeat in the show.
COUNTS = {
    CL + "hop_chan_state_data": {"num_hop_chans": None},
    CL + "channel_state_data": {"num_channels": None},
    CL + "nb_channel_state_data": {"num_nb_channels": None},
    CL + "select_state_data": {"count": None},
    CL + "global_state_data": {"count": None},
    CL + "auto_tunnel_gstatus": {"number": None},
    CL + "global_info_data": {
        "num_inst": CL + "inst_msg", "num_color": CL + "color_msg", "num_chan": CL + "channel_msg",
        "num_chan_nb": CL + "nb_channel_msg", "num_sel_tc": CL + "select_tc_msg", "num_sel_flow": CL + "select_flow_msg",
        "num_auto_tunnel": CL + "auto_tunnel_show", "num_hop_chan": CL + "hop_chan_msg", "num_enf_hop": CL + "enforce_hop_msg"},
}


@functools.cache
def schema():
    return json.loads(subprocess.check_output([os.environ["WAYFIND_SCHEMA_JSON"]]))


def record(name):
    return schema()["records"][name]


# Subject by subject, the bundle that is shown.
SUBJECTS = {
    "site-prefix": "fwe_pal_wayfind_show_site_prefix_response",
    "prefixtosite": "fwe_cl_wayfind_show_prefixtosite_response",
    "sitetohop": "fwe_cl_wayfind_show_sitetohop_response",
    "pal-debug": "fwe_pal_wayfind_show_debug_response",
    "cl-debug": "fwe_cl_wayfind_show_debug_response",
    "global": "fwe_cl_wayfind_show_global_response",
    "global-new": "fwe_cl_wayfind_show_global_new_response",
    "auto-tunnel": "fwe_cl_wayfind_show_auto_tunnel_response",
    "selection": "fwe_cl_wayfind_show_selection_response",
    "traffic-class": "fwe_cl_wayfind_show_traffic_class_response",
    "nb-channel": "fwe_cl_wayfind_show_nb_channel_response",
    "enforce-hop": "fwe_cl_wayfind_show_enforce_hop_resp",
    "multi-nh-map": "fwe_cl_wayfind_show_multi_nh_map_resp",
    "dcid-siteip-map": "fwe_cl_wayfind_show_dcid_siteip_map_resp",
    "channel": "fwe_cl_wayfind_show_channel_response",
    "hop-chan": "fwe_cl_wayfind_show_hop_chan_response",
    "dp-debug": "fwe_dp_wayfind_show_debug_response",
    "intf": "fwe_cl_wayfind_show_intf_response",
}


def number(bits, dice):
    return dice.choice([0, 1, (1 << bits) - 1, dice.getrandbits(bits), dice.getrandbits(bits), dice.getrandbits(bits)])


def text(width, dice):
    """At most width bytes; now and then exactly so many."""
    alphabet = "abcXYZ0189 _-.:/<>&\"'\\\u00e9"
    length = dice.choice([0, 1, width, width, dice.randrange(width + 1)])
    made = ""
    while len((made + "x").encode()) <= length:
        made += dice.choice(alphabet if len(made.encode()) + 2 <= length else "abcXYZ")
    return made


def address(dice):
    family = dice.randrange(5)
    if family == 0:
        return "none"
    if family < 3:
        return f"{ipaddress.IPv4Address(dice.getrandbits(32))}/{dice.randrange(33)}"
    return f"{ipaddress.IPv6Address(dice.getrandbits(128) | 1 << 127)}/{dice.randrange(129)}"


def one_value(field, dice):
    kind = field["kind"]
    if kind.startswith("u_int"):
        return str(number(int(kind[5:]), dice))
    if kind == "link_type":
        return str(number(32, dice))
    if kind == "ork_boolean":
        return dice.choice(["true", "false"])
    if kind == "ip_address":
        return address(dice)
    if kind == "char":
        return text(field["width"], dice)
    if kind == "enum":
        return [dice.choice(schema()["types"][field["type"]])]
    if kind == "flag set":
        return [flag for flag in schema()["types"][field["type"]] if dice.random() < 0.5]
    return values(field["type"], dice)


def values(name, dice):
    """Field by field a text, a list of empty elements, a dictionary, or in a list of one of these an array."""
    made = {}
    for field in record(name)["fields"]:
        if field["class"] == "counter":
            continue
        if field["class"].endswith("array"):
            made[field["name"]] = [one_value(field, dice) for _ in range(dice.randrange(4))]
        else:
            made[field["name"]] = one_value(field, dice)
    return made


def to_xml(name, made):
    """A record of values as a data file has it."""
    lines = []
    for field in record(name)["fields"]:
        if field["class"] == "counter":
            continue
        several = made[field["name"]] if field["class"].endswith("array") else [made[field["name"]]]
        for value in several:
            lines.append(f"<{field['name']}>{content(field, value)}</{field['name']}>\n")
    return "".join(lines)


def content(field, value):
    if isinstance(value, dict):
        return "\n" + to_xml(field["type"], value)
    if isinstance(value, list):
        return "".join(f"<{word}/>" for word in value)
    return escape(value.replace("\\", "\\\\"))


class Data:
    """Entries for every message: so many of those that may repeat, one of the others. The same seed gives the same entries."""

    def __init__(self, entries, seed=1, only=None):
        self.messages = {}
        repeatable = {member for bundle in schema()["bundles"].values() for member, many in bundle["members"] if many}
        for message, row in schema()["messages"].items():
            if only is not None and message not in only:
                self.messages[message] = []
                continue
            dice = random.Random(f"{seed} {message}")
            several = entries if message in repeatable else 1
            self.messages[message] = [[values(name, dice) for name in row["records"]] for _ in range(several)]

    def write(self, folder):
        for message, entries in self.messages.items():
            with open(os.path.join(folder, message + ".xml"), "w", encoding="utf-8") as file:
                file.write("<fwe_ui_wayfind>\n")
                for entry in entries:
                    for name, made in zip(schema()["messages"][message]["records"], entry):
                        file.write(f"<{name}>\n{to_xml(name, made)}</{name}>\n")
                file.write("</fwe_ui_wayfind>\n")

    def shown(self, bundle):
        """The (message, records) of a show, with its counts."""
        members = schema()["bundles"][bundle]["members"]
        total = sum(len(self.messages[member]) for member, many in members if many)
        for message, _ in members:
            for entry in self.messages[message]:
                yield message, [self.counted(name, made, total)
                                for name, made in zip(schema()["messages"][message]["records"], entry)]

    def counted(self, name, made, total):
        counts = {field: str(total if message is None else len(self.messages[message]))
                  for field, message in COUNTS.get(name, {}).items()}
        return {**made, **counts}
