// Prints the JSON Schema, or messages of every type in the form that it tells of.
#include <cstdio>
#include <string>

#include "tests/look/received.h"
#include "tools/look/json.h"
#include "tools/look/json_schema.h"

namespace {

void put_all(std::string& out, look::JsonDocument& document, look::Received& received) {
  for (unsigned i = 0; i < wayfind_message_count; ++i) {
    for (const uint32_t elements : {0u, 3u})
      document.put(out, received.add_filled(wayfind_messages[i], elements));
  }
}

// What no accessor sets: values without a name, a foreign family, a record without fields.
void put_odd(std::string& out, look::JsonDocument& document, look::Received& received) {
  const auto place = [](const look::Message& message, const char* record, const char* field) {
    return const_cast<uint8_t*>(message.at[0]) + look::field_named(record, field).offset;
  };
  const look::Message& interface = received.add("intf_data_msg", "<if_name>\\x01\"\\\\</if_name>");
  place(interface, "intf_data", "plr_type")[12] = 200;
  document.put(out, interface);
  const look::Message& map = received.add("multi_nh_map_msg", "<remote_ip>::1/128</remote_ip>");
  place(map, "multi_nh_map", "remote_endpoint")[11] = 9;
  document.put(out, map);
  const look::Message& channel = received.add("hop_chan_msg", "");
  (place(channel, "hop_chan_data", "hop_chan") +
   look::field_named("hop_chan_st", "flags_show").offset)[ORK_OBJECT_HEADER_SIZE] = 0xff;
  place(channel, "hop_chan_data", "mem")[ORK_OFFSET_VARIANT] = 0xff;
  document.put(out, channel);
}

std::string messages() {
  std::string out;
  look::Received newest(ORK_TRACKING_ON);
  look::Received older(ORK_TRACKING_OFF, "variant-0");
  look::JsonDocument document(newest.handle(), {.lines = false, .states = true});
  document.open(out);
  put_all(out, document, newest);
  put_all(out, document, older);
  put_odd(out, document, newest);
  document.close(out);
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  const bool is_schema = argc == 2 && std::string(argv[1]) == "schema";
  const std::string text = is_schema ? look::json_schema() : messages();
  std::fwrite(text.data(), 1, text.size(), stdout);
}
