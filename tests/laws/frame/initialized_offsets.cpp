// What initialize tells the runtime of the state bytes of embedded records, and of those that are
// embedded in these, whose headers are still zero at that time.
#include "laws/frame/fields.h"

namespace frame {

namespace {

std::string told_offset(unsigned at, int distance) {
  return "orklib_update_sttr_offset(7," + offset_text("new1", at) + "," + std::to_string(distance) +
         ")";
}

// The walk down a record: each embedded record, in field order, and behind it what it embeds.
// `states` is where the record's state block begins, counted from the object like `at`.
void append_walk(const told::Record& record, unsigned at, unsigned states,
                 std::vector<std::string>& calls) {
  for (const told::Field& field : record.fields) {
    if (field.nested < 0) continue;
    const unsigned child = at + field.offset;
    const unsigned nested = states + static_cast<unsigned>(field.nested);
    calls.push_back(told_offset(child, static_cast<int>(nested) - static_cast<int>(child)));
    append_walk(*told::record(field.type), child, nested, calls);
  }
}

// A record that is being initialized walks down once; then each embedded record is initialized and
// does the same.
void append_initialize(const told::Record& record, unsigned at, unsigned states,
                       std::vector<std::string>& calls) {
  append_walk(record, at, states, calls);
  for (const told::Field& field : record.fields) {
    if (field.nested < 0) continue;
    append_initialize(*told::record(field.type), at + field.offset,
                      states + static_cast<unsigned>(field.nested), calls);
  }
}

bool embeds(const told::Record& record) {
  return std::any_of(record.fields.begin(), record.fields.end(),
                     [](const told::Field& field) { return field.nested >= 0; });
}

bool embeds_records_that_embed(const told::Record& record) {
  return std::any_of(record.fields.begin(), record.fields.end(), [](const told::Field& field) {
    return field.nested >= 0 && embeds(*told::record(field.type));
  });
}

// A peer of that release: no type newer than it, none at all when it is negative.
spy::Replacement peer_of_release(int release) {
  return spy::replace(ork_domain_lookup_variant, [release](ork_handle* h, const ork_domain* d,
                                                           const ork_type_info* t, uint32_t* e) {
    return std::min(static_cast<int8_t>(release), spy::next(ork_domain_lookup_variant)(h, d, t, e));
  });
}

}  // namespace

TEST(InitializedOffsets, go_down_to_the_last_embedded_record_at_every_release) {
  std::vector<std::string> deep;
  for (const Type& type : types()) {
    if (!embeds(type.told)) continue;
    if (embeds_records_that_embed(type.told)) deep.push_back(type.told.name);
    std::vector<std::string> expected;
    append_initialize(type.told, 0, type.told.newest().body, expected);
    for (int release = -1; release < 4; ++release) {
      SpiedHandle h(kit::tracked);
      const auto peer = peer_of_release(release);
      spy::Log log;
      void* const obj = type.create(h);
      EXPECT_CALLS(log.calls_of({"orklib_update_sttr_offset"}), expected)
          << type.told.name << " at release " << release;
      type.destroy(h, obj);
    }
  }
  EXPECT_EQ(deep, std::vector<std::string>{"fwe_cl_wayfind_channel_data"});
}

// The state block of 160 bytes begins at 688. chan lies at 16 and has the 120 bytes from 696 on;
// its path, src_intf, dst_site and dst_intf lie 256, 288, 320 and 352 into it, their bytes 24, 48,
// 72 and 96 into its block. stats and mem lie at 432 and 536, their bytes at 818 and 830.
TEST(InitializedOffsets, of_channel_data_tell_of_the_four_arrays_of_its_channel_twice) {
  SpiedHandle h(kit::tracked);
  spy::Log log;
  void* const obj = type("fwe_cl_wayfind_channel_data").create(h);
  EXPECT_CALLS(
      log.calls_of({"orklib_update_sttr_offset"}),
      {"orklib_update_sttr_offset(7,new1+16,680)", "orklib_update_sttr_offset(7,new1+272,448)",
       "orklib_update_sttr_offset(7,new1+304,440)", "orklib_update_sttr_offset(7,new1+336,432)",
       "orklib_update_sttr_offset(7,new1+368,424)", "orklib_update_sttr_offset(7,new1+432,386)",
       "orklib_update_sttr_offset(7,new1+536,294)", "orklib_update_sttr_offset(7,new1+272,448)",
       "orklib_update_sttr_offset(7,new1+304,440)", "orklib_update_sttr_offset(7,new1+336,432)",
       "orklib_update_sttr_offset(7,new1+368,424)"});
  type("fwe_cl_wayfind_channel_data").destroy(h, obj);
}

}  // namespace frame
