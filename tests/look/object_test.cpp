#include "tools/look/object.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/look/received.h"
#include "tools/look/function.h"
#include "tools/look/path.h"

namespace look {
namespace {

template <class Result>
uint64_t got(ork_handle* handle, const Object& object, const wayfind_field& field) {
  using Get = Result(ork_handle*, uint32_t, const void*, uint32_t*);
  uint32_t err = 0;
  const Result result =
      function<Get>(field.functions, "_get_value")(handle, ORK_NO_INSTANCE, object.at, &err);
  EXPECT_EQ(err, 0u) << field.name;
  return result;
}

template <class Result>
uint64_t got(ork_handle* handle, const Object& object, const wayfind_field& field, uint32_t index) {
  using Get = Result(ork_handle*, uint32_t, const void*, uint32_t, uint32_t*);
  uint32_t err = 0;
  const Result result =
      function<Get>(field.functions, "_get_value")(handle, ORK_NO_INSTANCE, object.at, index, &err);
  EXPECT_EQ(err, 0u) << field.name;
  return result;
}

const void* lent(ork_handle* handle, const Object& object, const wayfind_field& field) {
  using Get = const void*(ork_handle*, uint32_t, const void*, uint32_t*);
  uint32_t err = 0;
  return function<Get>(field.functions, "_get")(handle, ORK_NO_INSTANCE, object.at, &err);
}

const void* lent(ork_handle* handle, const Object& object, const wayfind_field& field,
                 uint32_t index) {
  using Get = const void*(ork_handle*, uint32_t, const void*, uint32_t, uint32_t*);
  uint32_t err = 0;
  return function<Get>(field.functions, "_get")(handle, ORK_NO_INSTANCE, object.at, index, &err);
}

std::string got_text(ork_handle* handle, const Object& object, const wayfind_field& field) {
  using Get = void(ork_handle*, uint32_t, const void*, char*, uint32_t, uint32_t*);
  char chars[256] = "";
  uint32_t err = 0;
  function<Get>(field.functions, "_get")(handle, ORK_NO_INSTANCE, object.at, chars, sizeof chars,
                                         &err);
  EXPECT_EQ(err, 0u) << field.name;
  return chars;
}

// Compares what is read with what the library's accessors give, field by field.
class AccessorComparison {
 public:
  explicit AccessorComparison(ork_handle* handle) : handle_(handle) {}

  void run(const Object& object) {
    for (const wayfind_field& field : fields(object)) {
      ++compared_;
      SCOPED_TRACE(std::string(object.record->name) + "." + field.name);
      switch (field.cls) {
        case WAYFIND_VALUE:
        case WAYFIND_COUNTER: compare_number(object, field); break;
        case WAYFIND_TEXT:
          EXPECT_EQ(text(value(object, field)), got_text(handle_, object, field));
          break;
        case WAYFIND_OBJECT:
          EXPECT_EQ(value(object, field).at, lent(handle_, object, field));
          if (field.kind == WAYFIND_RECORD) run(look::object(value(object, field)));
          break;
        case WAYFIND_VALUE_ARRAY:
        case WAYFIND_RECORD_ARRAY: compare_elements(object, field); break;
      }
    }
  }
  int compared() const { return compared_; }

 private:
  void compare_number(const Object& object, const wayfind_field& field) {
    const uint64_t read = number(value(object, field));
    switch (field.kind) {
      case WAYFIND_U_INT8: EXPECT_EQ(read, got<uint8_t>(handle_, object, field)); break;
      case WAYFIND_U_INT16: EXPECT_EQ(read, got<uint16_t>(handle_, object, field)); break;
      case WAYFIND_U_INT64: EXPECT_EQ(read, got<uint64_t>(handle_, object, field)); break;
      default: EXPECT_EQ(read, got<uint32_t>(handle_, object, field)); break;
    }
  }

  void compare_elements(const Object& object, const wayfind_field& field) {
    const Elements all = elements(object, field);
    EXPECT_EQ(all.count, 3u);
    for (uint32_t i = 0; i < all.count; ++i) {
      if (field.kind == WAYFIND_RECORD) {
        EXPECT_EQ(all[i].at, lent(handle_, object, field, i));
        run(look::object(all[i]));
      } else if (field.kind == WAYFIND_U_INT8) {
        EXPECT_EQ(number(all[i]), got<uint8_t>(handle_, object, field, i));
      } else if (field.kind == WAYFIND_U_INT16) {
        EXPECT_EQ(number(all[i]), got<uint16_t>(handle_, object, field, i));
      } else {
        EXPECT_EQ(number(all[i]), got<uint32_t>(handle_, object, field, i));
      }
    }
  }

  ork_handle* handle_;
  int compared_ = 0;
};

TEST(Object, every_value_of_every_message_is_what_the_accessors_give) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    Received received(tracking);
    AccessorComparison comparison(received.handle());
    for (unsigned i = 0; i < wayfind_message_count; ++i) {
      const Message& message = received.add_filled(wayfind_messages[i], 3);
      for (unsigned slot = 0; slot < message.type->record_count; ++slot)
        comparison.run(message.record(slot));
    }
    EXPECT_GT(comparison.compared(), 352);
  }
}

TEST(Object, an_older_release_has_the_fields_of_its_variant) {
  Received received(ORK_TRACKING_OFF, "variant-0");
  const Message& message = received.add("hop_chan_msg", "<dscp_str>ef</dscp_str>");
  const Object data = message.record(0);
  EXPECT_EQ(fields(data).size(), 5u);
  EXPECT_FALSE(holds(data, field_named("hop_chan_data", "serv")));
  EXPECT_TRUE(holds(data, field_named("hop_chan_data", "probe")));
}

TEST(Object, a_negative_variant_has_no_field) {
  Received received;
  const Message& message = received.add("hop_chan_msg", "<dscp_str>ef</dscp_str>");
  const_cast<uint8_t*>(message.at[0])[ORK_OFFSET_VARIANT] = 0xff;
  EXPECT_TRUE(fields(message.record(0)).empty());
}

TEST(Object, a_text_that_fills_its_field_ends_there) {
  Received received;
  const Message& message = received.add("hop_chan_msg", "<dscp_str>12345678</dscp_str>");
  EXPECT_EQ(text(value(message.record(0), field_named("hop_chan_data", "dscp_str"))), "12345678");
}

TEST(Object, an_array_whose_elements_could_not_be_had_has_none) {
  Received received;
  const Message& message =
      received.add("channel_msg", "<chan><path><path_id>7</path_id></path></chan>");
  const wayfind_field& array = field_named("sel_lb_path_st", "path_id");
  const size_t place =
      size_t{field_named("channel_data", "chan").offset} + field_named("chan_st", "path").offset;
  const Object path{field_named("chan_st", "path").record, message.at[0] + place};
  ASSERT_EQ(elements(path, array).count, 1u);
  auto* block = const_cast<uint8_t*>(path.at) + array.offset;
  uint8_t kept[sizeof(void*)];
  std::memcpy(kept, block, sizeof kept);
  std::memset(block, 0, sizeof kept);
  EXPECT_EQ(elements(path, array).count, 0u);
  std::memcpy(block, kept, sizeof kept);
}

TEST(Message, both_records_of_the_message_with_two_are_there) {
  Received received;
  const Message& message =
      received.add("auto_tunnel_show",
                   "<fwe_cl_wayfind_auto_tunnel><table_id>7</table_id></fwe_cl_wayfind_auto_tunnel>"
                   "<fwe_cl_wayfind_auto_tunnel_misc><intf_name>tu1</intf_name></"
                   "fwe_cl_wayfind_auto_tunnel_misc>");
  EXPECT_EQ(number(value(message.record(0), field_named("auto_tunnel", "table_id"))), 7u);
  EXPECT_EQ(text(value(message.record(1), field_named("auto_tunnel_misc", "intf_name"))), "tu1");
}

TEST(Message, a_bundle_names_its_members_alone) {
  const wayfind_bundle& bundle = bundle_named("show_hop_chan_response");
  EXPECT_EQ(member_of(bundle, message_named("hop_chan_msg"))->repeatable, 1);
  EXPECT_EQ(member_of(bundle, message_named("hop_chan_state_msg"))->repeatable, 0);
  EXPECT_EQ(member_of(bundle, message_named("channel_msg")), nullptr);
}

}  // namespace
}  // namespace look
