#include "support.h"

namespace platform_test {
namespace {

struct alignas(8) Object {
  ork_object header{};
};

uint32_t adjust(const Handle& handle, Object& object, const TestType& type) {
  uint32_t err = 0;
  const auto newest = static_cast<int32_t>(type.get()->varinfo->n_variants - 1);
  const uint32_t risen = orklib_adjust_variant(handle.get(), 0, &object, type.get(), newest, &err);
  EXPECT_EQ(err, 0u);
  return risen;
}

int risen_from(std::vector<uint32_t> used_lengths, uint8_t cap, int8_t variant, uint8_t flags = 0) {
  const Handle handle;
  const TestType type(1, "type", std::move(used_lengths));
  Object object;
  object.header.variant_cap = cap;
  object.header.variant = variant;
  object.header.obj_flags = flags;
  adjust(handle, object, type);
  return object.header.variant;
}

TEST(Variant, storage_of_the_newest_layout_takes_any_variant) {
  EXPECT_EQ(risen_from({251, 253, 384, 385}, 3, 0), 3);
  EXPECT_EQ(risen_from({251, 253, 384, 385}, 3, -1), 3);
  EXPECT_EQ(risen_from({400, 584}, 0xFF, 0), 1) << "a cap outside the table is the newest layout";
}

TEST(Variant, older_layouts_rise_as_far_as_their_room_goes) {
  EXPECT_EQ(risen_from({251, 253, 384, 385}, 0, 0), 1) << "253 in 272";
  EXPECT_EQ(risen_from({251, 253, 384, 385}, 1, 0), 1);
  EXPECT_EQ(risen_from({251, 253, 384, 385}, 2, 0), 3) << "385 in 400";
  EXPECT_EQ(risen_from({72, 84}, 0, 0), 1) << "84 in 88";
  EXPECT_EQ(risen_from({48, 52}, 0, 0), 1) << "52 in 56";
  EXPECT_EQ(risen_from({44, 56, 60}, 0, 0), 1) << "56 in 56";
  EXPECT_EQ(risen_from({44, 56, 60}, 1, 0), 2) << "60 in 64";
  EXPECT_EQ(risen_from({400, 584}, 0, 0), 0);
  EXPECT_EQ(risen_from({200, 264}, 0, 0), 0);
}

TEST(Variant, tracked_object_of_an_older_layout_stays_in_it) {
  EXPECT_EQ(risen_from({72, 84}, 0, 0, OBJ_STATE_TRACKED), 0);
  EXPECT_EQ(risen_from({251, 253, 384, 385}, 2, 0, OBJ_STATE_TRACKED), 2);
}

TEST(Variant, domain_sets_the_limit) {
  const Handle handle;
  const TestType type(1, "type", {20, 30, 40});
  uint32_t err = 0;
  ork_handle_set_peer(handle.get(), "peer",
                      parse_list("type 01010101010101010101010101010101 2").get(), &err);
  Object object;
  object.header.variant_cap = 2;
  EXPECT_EQ(adjust(handle, object, type), 1u);
  EXPECT_EQ(object.header.variant, 1);
  EXPECT_EQ(adjust(handle, object, type), 0u) << "nothing is lowered and nothing rises twice";
}

TEST(Variant, null_object_or_descriptor_is_left_alone) {
  const Handle handle;
  const TestType type(1, "type", {20, 30});
  uint32_t err = 0;
  Object object;
  EXPECT_EQ(orklib_adjust_variant(handle.get(), 0, nullptr, type.get(), 1, &err), 0u);
  EXPECT_EQ(orklib_adjust_variant(handle.get(), 0, &object, nullptr, 1, &err), 0u);
}

TEST(Object, header_is_read_and_null_is_answered) {
  Object object;
  object.header.variant = -3;
  object.header.obj_flags = 0x28;
  EXPECT_EQ(ork_get_instance_variant(&object, 1, 0), -3);
  EXPECT_EQ(ork_get_instance_variant(&object, 1, 1), -3);
  EXPECT_EQ(ork_get_instance_variant(&object, 0, 1), -3);
  EXPECT_EQ(ork_get_instance_variant(nullptr, 1, 0), 0);
  EXPECT_EQ(ork_get_instance_obj_flag(&object, 1, 0), 0x28);
  EXPECT_EQ(ork_get_manifested_type_info(nullptr), nullptr);
  EXPECT_EQ(ork_get_manifested_type_info(&object), nullptr);
  const TestType type(7, "type", {20});
  *ork_get_manifested_type_info_ptr_mem(&object) = type.get();
  const Handle handle;
  uint32_t err = 0;
  EXPECT_EQ(ork_get_luid(handle.get(), 0, &object, &err), type.get()->luid);
  EXPECT_EQ(ork_get_luid(handle.get(), 0, nullptr, &err), nullptr);
  EXPECT_EQ(err, 22u);
}

TEST(Object, slot_block_leads_to_the_descriptor) {
  const TestType type(7, "type", {20});
  const ork_type_info* block = type.get();
  Object object;
  const void* address = &block;
  std::memcpy(object.header.type_info_slot, &address, sizeof address);
  object.header.obj_flags = OBJ_OWNS_SLOT_BLOCK;
  EXPECT_EQ(ork_get_manifested_type_info(&object), type.get());
}

}  // namespace
}  // namespace platform_test
