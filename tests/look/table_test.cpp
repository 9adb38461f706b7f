#include "tools/look/table.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/look/received.h"
#include "tests/look/told_roles.h"
#include "tools/look/csv.h"
#include "tools/look/mistake.h"

namespace look {
namespace {

class Channels : public testing::Test {
 protected:
  Channels() {
    roles.keys["nb_channel_msg"] = {"chan_nb.chan_id"};
    roles.roles["chan_nb_st.chan_id"] = column_role;
    roles.roles["chan_nb_st.state"] = column_role;
    roles.roles["chan_nb_st.tx_state"] = column_role;
    add("1", "UP");
    add("1000", "DOWN");
  }

  void add(const std::string& id, const std::string& state) {
    received.add("nb_channel_msg", "<chan_nb><chan_id>" + id +
                                       "</chan_id><state><WAYFIND_UI_CHAN_NB_STATE_" + state +
                                       "/></state></chan_nb>");
  }
  Sheets sheets(const std::string& columns = "") const {
    Sheets made(bundle_named("show_nb_channel_response"), columns, roles);
    for (const Message& message : received.messages()) made.add(received.handle(), message);
    return made;
  }
  std::string table(const std::string& columns = "", const TableStyle& style = {}) const {
    std::string out;
    put_tables(out, sheets(columns), style);
    return out;
  }
  std::string csv(const std::string& columns = "") const {
    std::string out;
    put_csv(out, sheets(columns));
    return out;
  }

  Received received;
  ToldRoles roles;
};

TEST_F(Channels, stand_in_aligned_columns_the_key_first_and_numbers_at_the_right) {
  EXPECT_EQ(table(),
            "CHAN_ID  STATE  TX_STATE\n"
            "      1  UP     REACHABLE\n"
            "   1000  DOWN   REACHABLE\n");
}

TEST_F(Channels, show_the_columns_that_are_chosen) {
  EXPECT_EQ(table("mem.fwe_num,chan_nb.chan_id"),
            "FWE_NUM  CHAN_ID\n"
            "      0        1\n"
            "      0     1000\n");
}

TEST_F(Channels, a_state_message_has_no_table_unless_its_fields_are_chosen) {
  received.add("nb_channel_state_msg", "<num_nb_channels>2</num_nb_channels>");
  EXPECT_EQ(table().find("NUM"), std::string::npos);
  EXPECT_EQ(table("num_nb_channels"), "NUM_NB_CHANNELS\n              2\n");
}

TEST_F(Channels, a_column_that_does_not_exist_is_told_with_its_place) {
  try {
    sheets("chan_nb.chan_id,chan_nb.stat");
    FAIL();
  } catch (const Mistake& made) {
    EXPECT_STREQ(made.what(), "character 25: there is no field stat; nearest: state, tx_state");
  }
}

TEST_F(Channels, lines_are_made_to_fit_by_cutting_the_widest_column) {
  EXPECT_EQ(table("", {.width = 22}),
            "CHAN_ID  STATE  TX_ST…\n"
            "      1  UP     REACH…\n"
            "   1000  DOWN   REACH…\n");
}

TEST_F(Channels, numbers_are_never_cut) {
  EXPECT_EQ(table("chan_nb.chan_id", {.width = 3}), "CHAN_ID\n      1\n   1000\n");
}

TEST_F(Channels, colour_marks_the_head_and_the_key) {
  EXPECT_EQ(table("", {.colour = true}),
            "\x1b[1mCHAN_ID\x1b[0m  \x1b[1mSTATE\x1b[0m  \x1b[1mTX_STATE\x1b[0m\n"
            "      \x1b[36m1\x1b[0m  UP     REACHABLE\n"
            "   \x1b[36m1000\x1b[0m  DOWN   REACHABLE\n");
}

TEST_F(Channels, csv_has_the_paths_above_the_same_cells) {
  EXPECT_EQ(csv(),
            "chan_nb.chan_id,chan_nb.state,chan_nb.tx_state\r\n"
            "1,UP,REACHABLE\r\n"
            "1000,DOWN,REACHABLE\r\n");
}

TEST(Table, every_type_of_message_has_its_own_with_its_name_above) {
  Received received;
  ToldRoles roles;
  roles.keys["select_tc_msg"] = {"tc_id"};
  roles.keys["select_flow_msg"] = {"table_id"};
  const wayfind_bundle& bundle = bundle_named("show_selection_response");
  Sheets sheets(bundle, "", roles);
  sheets.add(received.handle(), received.add("select_tc_msg", "<tc_id>1</tc_id>"));
  std::string one;
  put_tables(one, sheets, {});
  EXPECT_EQ(one, "TC_ID\n    1\n");
  sheets.add(received.handle(), received.add("select_flow_msg", "<table_id>2</table_id>"));
  sheets.add(received.handle(), received.add("select_state_msg", ""));
  std::string both, values;
  put_tables(both, sheets, {});
  put_csv(values, sheets);
  EXPECT_EQ(both,
            "fwe_cl_wayfind_select_tc_msg:\nTC_ID\n    1\n\n"
            "fwe_cl_wayfind_select_flow_msg:\nTABLE_ID\n       2\n");
  EXPECT_EQ(values, "tc_id\r\n1\r\n\r\ntable_id\r\n2\r\n");
}

TEST(Table, without_any_role_all_values_are_columns) {
  Received received;
  Sheets sheets(bundle_named("fwe_cl_wayfind_show_debug_response"), "", ToldRoles());
  sheets.add(received.handle(), received.add("debug_msg", "<is_none>true</is_none>"));
  std::string out;
  put_csv(out, sheets);
  EXPECT_EQ(out,
            "info_enabled,trace_enabled,warn_enabled,error_enabled,stats_enabled,is_none\r\n"
            "0,0,0,0,0,true\r\n");
}

TEST(Table, columns_by_role_stand_outside_of_arrays_of_records) {
  ToldRoles roles;
  roles.keys["select_flow_msg"] = {"hash_val"};
  roles.roles["select_flow_data.hash_val"] = column_role;
  roles.roles["select_all_policies.num_policies"] = column_role;
  roles.roles["select_policy.policy_seq"] = column_role;
  roles.roles["sel_lb_path_st.path_id"] = column_role;
  const auto paths = [&](const char* message) {
    std::string told;
    for (const Column& column : columns_by_role(message_named(message), roles))
      told += column.path.text + (column.is_key ? "! " : " ");
    return told;
  };
  EXPECT_EQ(paths("select_flow_msg"), "hash_val! sel_all_policies.num_policies ");
  EXPECT_EQ(paths("channel_msg"), "chan.path.path_id[*] ");
}

// A table or the values of chosen columns of one message.
std::string rendered(Received& received, const Message& message, const std::string& bundle,
                     const std::string& columns, bool is_csv) {
  Sheets sheets(bundle_named(bundle), columns, ToldRoles());
  sheets.add(received.handle(), message);
  std::string out;
  if (is_csv) {
    put_csv(out, sheets);
  } else {
    put_tables(out, sheets, {});
  }
  return out.substr(out.find('\n') + 1);
}

TEST(Table, what_is_empty_or_absent_is_a_dash) {
  Received received(ORK_TRACKING_OFF, "variant-0");
  const Message& message = received.add("hop_chan_msg", "");
  const std::string columns = "dscp_str,hop_chan.flags_show,hop_chan.hop_id";
  EXPECT_EQ(rendered(received, message, "show_hop_chan_response", columns, false),
            "-         -                0\n");
  EXPECT_EQ(rendered(received, message, "show_hop_chan_response", columns, true), ",,0\r\n");
}

TEST(Table, characters_count_and_not_bytes) {
  Received received;
  Sheets sheets(bundle_named("show_intf_response"), "if_name,fwe_if_h", ToldRoles());
  sheets.add(received.handle(),
             received.add("intf_data_msg", "<if_name>\xc3\xa9\xc3\xa9-name</if_name>"));
  sheets.add(received.handle(), received.add("intf_data_msg", "<if_name>abcdefgh</if_name>"));
  std::string out;
  put_tables(out, sheets, {});
  EXPECT_EQ(out,
            "IF_NAME   FWE_IF_H\n"
            "\xc3\xa9\xc3\xa9-name          0\n"
            "abcdefgh         0\n");
}

TEST(Table, heads_are_as_long_as_it_takes_to_tell_them_apart) {
  Received received;
  Sheets sheets(bundle_named("show_traffic_class_response"),
                "primary_channels.num_channels,backup_channels.num_channels,"
                "primary_channels.channels[*].chan_id",
                ToldRoles());
  sheets.add(received.handle(),
             received.add("select_tc_msg",
                          "<primary_channels><channels><chan_id>4</chan_id></channels>"
                          "<channels><chan_id>5</chan_id></channels></primary_channels>"));
  std::string out;
  put_tables(out, sheets, {});
  EXPECT_EQ(out,
            "PRIMARY_CHANNELS.NUM_CHANNELS  BACKUP_CHANNELS.NUM_CHANNELS  CHAN_ID\n"
            "                            2                             0  4,5\n");
}

TEST(Csv, quotes_what_would_break_a_line_apart) {
  Received received;
  const auto row = [&](const std::string& name) {
    return rendered(received, received.add("intf_data_msg", "<if_name>" + name + "</if_name>"),
                    "show_intf_response", "if_name,zero_sla_type", true);
  };
  EXPECT_EQ(row("plain"), "plain,0\r\n");
  EXPECT_EQ(row("a,b"), "\"a,b\",0\r\n");
  EXPECT_EQ(row("a\"b"), "\"a\"\"b\",0\r\n");
  EXPECT_EQ(row("a\\x0ab"), "a\\x0ab,0\r\n");
}

TEST(Cell, holds_values_of_every_kind) {
  Received received;
  EXPECT_EQ(rendered(received,
                     received.add("hop_chan_msg",
                                  "<hop_chan><flags_show><WAYFIND_UI_HOP_CHAN_FLAG_ACK/>"
                                  "<WAYFIND_UI_HOP_CHAN_FLAG_MUTE/></flags_show></hop_chan>"
                                  "<stats><send_bytes>18446744073709551615</send_bytes></stats>"),
                     "show_hop_chan_response", "hop_chan.flags_show,stats.send_bytes", true),
            "\"ACK,MUTE\",18446744073709551615\r\n");
  EXPECT_EQ(
      rendered(received, received.add("multi_nh_map_msg", "<remote_ip>10.0.0.1/24</remote_ip>"),
               "show_multi_nh_map_resp", "remote_ip,remote_endpoint", true),
      "10.0.0.1/24,none\r\n");
  EXPECT_EQ(rendered(received, received.add("enforce_hop_msg", "<linktype>3</linktype>"),
                     "show_enforce_hop_resp", "linktype", true),
            "3\r\n");
  const Message& interface = received.add("intf_data_msg", "");
  const_cast<uint8_t*>(interface.at[0])[field_named("intf_data", "plr_type").offset + 12] = 9;
  EXPECT_EQ(rendered(received, interface, "show_intf_response", "plr_type", true), "9\r\n");
}

TEST(TableStyle, a_file_is_no_terminal_and_has_neither_width_nor_colour) {
  FILE* file = tmpfile();
  const TableStyle style = style_for(fileno(file));
  EXPECT_EQ(style.width, 0u);
  EXPECT_FALSE(style.colour);
  fclose(file);
}

class Terminal : public testing::Test {
 protected:
  Terminal() : controller_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(controller_);
    unlockpt(controller_);
    terminal = open(ptsname(controller_), O_RDWR | O_NOCTTY);
    const winsize size{.ws_row = 24, .ws_col = 77, .ws_xpixel = 0, .ws_ypixel = 0};
    ioctl(terminal, TIOCSWINSZ, &size);
    setenv("TERM", "xterm", 1);
    unsetenv("NO_COLOR");
  }
  ~Terminal() override {
    close(terminal);
    close(controller_);
    unsetenv("NO_COLOR");
  }
  int terminal;

 private:
  int controller_;
};

TEST_F(Terminal, gives_its_width_and_takes_colour) {
  EXPECT_EQ(style_for(terminal).width, 77u);
  EXPECT_TRUE(style_for(terminal).colour);
}

TEST_F(Terminal, takes_no_colour_when_that_is_asked_or_when_it_is_dumb) {
  setenv("NO_COLOR", "1", 1);
  EXPECT_FALSE(style_for(terminal).colour);
  setenv("NO_COLOR", "", 1);
  EXPECT_TRUE(style_for(terminal).colour);
  setenv("TERM", "dumb", 1);
  EXPECT_FALSE(style_for(terminal).colour);
}

}  // namespace
}  // namespace look
