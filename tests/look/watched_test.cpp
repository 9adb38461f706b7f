#include "tools/look/watched.h"

#include <gtest/gtest.h>

#include "tests/look/received.h"
#include "tools/look/table.h"

namespace look {
namespace {

class HopChannels : public testing::Test {
 protected:
  void channel(const std::string& id, const std::string& packets, const std::string& state) {
    received.add("hop_chan_msg",
                 "<hop_chan><hop_chan_id>" + id + "</hop_chan_id></hop_chan><stats><send_packets>" +
                     packets +
                     "</send_packets></stats><probe><tx_state><WAYFIND_UI_HOP_CHAN_STATE_" + state +
                     "/></tx_state></probe>");
  }
  // A round of what was added since the last one.
  void round(double seconds) {
    std::vector<Message> shown = received.messages();
    shown.erase(shown.begin(), shown.begin() + static_cast<std::ptrdiff_t>(taken));
    taken += shown.size();
    watched.take(received.handle(), shown, seconds);
  }
  std::string changes() const {
    constexpr const char* signs[] = {"+", "-", "~"};
    std::string told;
    for (const Change& change : watched.changes())
      told += signs[static_cast<int>(change.kind)] + change.key + " " + change.path + " " +
              change.before + ">" + change.after + " " + change.rate + "\n";
    return told;
  }
  std::string table(const TableStyle& style = {}) const {
    std::string out;
    put_tables(out, watched.tables(), style);
    return out;
  }

  Received received;
  size_t taken = 0;
  Watched watched{bundle_named("show_hop_chan_response"),
                  "hop_chan.hop_chan_id,stats.send_packets,probe.tx_state", roles_of_tables()};
};

TEST_F(HopChannels, nothing_has_changed_the_first_time_nor_while_all_stays) {
  channel("1", "10", "REACHABLE");
  round(0);
  EXPECT_EQ(changes(), "");
  channel("1", "10", "REACHABLE");
  round(2);
  EXPECT_EQ(changes(), "");
}

TEST_F(HopChannels, values_that_become_others_are_changes_and_counters_have_a_rate) {
  channel("1", "10", "REACHABLE");
  round(0);
  channel("1", "25", "UNREACHABLE");
  round(2);
  EXPECT_EQ(changes(),
            "~1 stats.send_packets 10>25 +7.5/s\n"
            "~1 probe.tx_state REACHABLE>UNREACHABLE \n");
  channel("1", "125", "UNREACHABLE");
  round(4);
  EXPECT_EQ(changes(), "~1 stats.send_packets 25>125 +25/s\n");
}

TEST_F(HopChannels, a_counter_that_begins_anew_has_no_rate) {
  channel("1", "10", "REACHABLE");
  round(0);
  channel("1", "3", "REACHABLE");
  round(2);
  EXPECT_EQ(changes(), "~1 stats.send_packets 10>3 \n");
}

TEST_F(HopChannels, messages_that_come_and_go_are_told_by_their_key) {
  channel("1", "10", "REACHABLE");
  channel("2", "10", "REACHABLE");
  round(0);
  channel("3", "10", "REACHABLE");
  channel("2", "10", "REACHABLE");
  round(2);
  EXPECT_EQ(changes(), "+3  > \n-1  > \n");
}

TEST_F(HopChannels, a_key_that_stands_twice_is_two_messages) {
  channel("1", "10", "REACHABLE");
  channel("1", "20", "REACHABLE");
  round(0);
  channel("1", "10", "REACHABLE");
  channel("1", "21", "REACHABLE");
  round(1);
  EXPECT_EQ(changes(), "~1#2 stats.send_packets 20>21 +1.0/s\n");
}

TEST_F(HopChannels, the_table_marks_what_has_changed) {
  channel("1", "10", "REACHABLE");
  channel("2", "10", "REACHABLE");
  round(0);
  channel("1", "30", "INITIATED");
  channel("2", "10", "REACHABLE");
  round(2);
  EXPECT_EQ(table(),
            "HOP_CHAN_ID  SEND_PACKETS  TX_STATE\n"
            "          1      30 +10/s* INITIATED*\n"
            "          2            10  REACHABLE\n");
  EXPECT_NE(table({.colour = true}).find("\x1b[1;33mINITIATED\x1b[0m\n"), std::string::npos);
}

TEST_F(HopChannels, a_counter_that_was_not_chosen_stands_in_the_table_once_it_has_grown) {
  watched = Watched(bundle_named("show_hop_chan_response"), "", roles_of_tables());
  channel("1", "10", "REACHABLE");
  round(0);
  EXPECT_EQ(table().find("SEND_PACKETS"), std::string::npos);
  channel("1", "11", "REACHABLE");
  round(1);
  EXPECT_NE(table().find("11 +1.0/s"), std::string::npos);
  EXPECT_EQ(table().find("SEND_BYTES"), std::string::npos);
  channel("1", "11", "REACHABLE");
  round(1);
  EXPECT_NE(table().find("SEND_PACKETS"), std::string::npos);
}

}  // namespace
}  // namespace look
