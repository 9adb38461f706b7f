// What is exactly as long, or as many, as may be: accepted; and one more: refused.
#include "support.h"

namespace platform_test {
namespace {

constexpr const char* luid = "01010101010101010101010101010101";
constexpr const char* luid_2 = "02020202020202020202020202020202";

std::string line(const char* of, int variants) {
  return "type " + std::string(of) + " " + std::to_string(variants) + "\n";
}

// A type of that many variants, each a byte longer than the one before.
std::vector<uint32_t> growing(uint32_t variants) {
  std::vector<uint32_t> used;
  for (uint32_t variant = 0; variant < variants; ++variant) used.push_back(20 + variant);
  return used;
}

int8_t look_up(const Handle& handle, const TestType& type) {
  uint32_t err = 0;
  return ork_domain_lookup_variant(handle.get(), &handle->domain, type.get(), &err);
}

// ---- Frames ----

// The first 43 bytes of a frame of that length.
std::vector<uint8_t> beginning_of_frame(uint32_t length) {
  std::vector<uint8_t> bytes(43);
  const ork_message_header header{0xBC, {}, 0, 0, length};
  const Handle handle;
  uint32_t err = 0;
  _ork_message_header_marshal(handle.get(), 0, bytes.data(), &header, 27, &err);
  return bytes;
}

uint32_t frame_length(uint32_t told, uint32_t max, uint32_t& err) {
  const std::vector<uint8_t> bytes = beginning_of_frame(told);
  err = 0;
  return ork_frame_length(bytes.data(), 43, max, &err);
}

TEST(FrameLimits, a_frame_of_the_longest_length_is_one_and_a_longer_one_is_none) {
  for (const uint32_t longest : {43u, 1000u, 0x7FFFFFFFu}) {
    uint32_t err = 0;
    EXPECT_EQ(frame_length(longest, longest, err), longest);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(frame_length(longest + 1, longest, err), 0u);
    EXPECT_EQ(err, 74u);
  }
}

TEST(FrameLimits, a_frame_of_header_and_luid_alone_is_one_and_a_shorter_one_is_none) {
  uint32_t err = 0;
  EXPECT_EQ(frame_length(43, 1000, err), 43u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(frame_length(42, 1000, err), 0u);
  EXPECT_EQ(err, 74u);
}

TEST(FrameLimits, a_dispatched_frame_may_say_the_longest_length_that_has_a_sign) {
  const Handle handle;
  uint32_t err = 0;
  ork_dispatcher* const dispatcher = ork_dispatcher_create(&err);
  for (const auto& [told, answer] : {std::pair{0x7FFFFFFFu, 90u}, {0x80000000u, 74u}}) {
    const std::vector<uint8_t> bytes = beginning_of_frame(told);
    err = 0;
    EXPECT_EQ(ork_dispatch(dispatcher, handle.get(), 0, nullptr, bytes.data(), 43, &err), 0u);
    EXPECT_EQ(err, answer) << "not whole, or no frame";
  }
  ork_dispatcher_free(dispatcher);
}

// ---- Variants ----

TEST(VariantLimits, a_list_tells_of_127_variants_and_not_of_128) {
  const List list = parse_list(line(luid, 127));
  ASSERT_NE(list, nullptr);
  const TestType type(1, "type", {20});
  EXPECT_EQ(ork_type_list_variants(list.get(), type.get()->luid), 127u);
  std::string text(100, '\0');
  text.resize(ork_type_list_text(list.get(), text.data(), text.size()));
  EXPECT_EQ(text, line(luid, 127));
  uint32_t err = 0;
  char reason[128] = "";
  const std::string one_more = line(luid, 128);
  EXPECT_EQ(ork_type_list_parse(one_more.data(), one_more.size(), &err, reason, sizeof reason),
            nullptr);
  EXPECT_EQ(err, 22u);
}

TEST(VariantLimits, a_peer_or_a_release_with_127_variants_is_at_126) {
  const Handle handle;
  const TestType few(1, "type", {20, 30});
  const TestType many(2, "type", growing(127));
  EXPECT_EQ(look_up(handle, many), 126) << "without a peer";
  uint32_t err = 0;
  const List list = parse_list(line(luid, 127) + line(luid_2, 127));
  ASSERT_NE(list, nullptr);
  ork_handle_set_peer(handle.get(), "peer", list.get(), &err);
  EXPECT_EQ(look_up(handle, few), 126);
  EXPECT_EQ(look_up(handle, many), 126);
  const Handle released([&](ork_options& options) { options.release = list.get(); });
  EXPECT_EQ(look_up(released, many), 126);
}

TEST(VariantLimits, a_module_announces_all_127) {
  const TestType many(1, "type", growing(127));
  const TestModule module({many.get()});
  uint32_t err = 0;
  const List all(ork_type_list_from_modules(&err));
  EXPECT_EQ(ork_type_list_variants(all.get(), many.get()->luid), 127u);
  const Handle handle;
  const List announced(ork_handle_announcement(handle.get(), &err));
  EXPECT_EQ(ork_type_list_variants(announced.get(), many.get()->luid), 127u);
}

TEST(VariantLimits, an_object_is_upgraded_to_126) {
  const Handle handle;
  const TestType many(1, "type", growing(127));
  for (const uint8_t cap : {uint8_t{126}, uint8_t{127}, uint8_t{255}}) {
    alignas(8) ork_object object{};
    object.variant_cap = cap;
    uint32_t err = 0;
    EXPECT_EQ(orklib_adjust_variant(handle.get(), 0, &object, many.get(), 126, &err), 1u);
    EXPECT_EQ(object.variant, 126) << "126 is the newest layout, and so is what is none";
  }
  alignas(8) ork_object object{};
  object.variant_cap = 125;
  object.obj_flags = OBJ_STATE_TRACKED;
  uint32_t err = 0;
  orklib_adjust_variant(handle.get(), 0, &object, many.get(), 126, &err);
  EXPECT_EQ(object.variant, 125) << "the layout before the newest";
}

TEST(VariantLimits, a_shared_type_keeps_127_variants_with_their_counts) {
  uint32_t err = 0;
  ork_storage* const storage = ork_storage_create(0, &err);
  {
    const Handle handle([&](ork_options& options) { options.storage = storage; });
    TestType many(1, "type", growing(127));
    const TestType fewer(1, "type", growing(126));
    auto* const copy = static_cast<ork_type_info*>(
        handle->shared_alloc_fn(handle->shared_pool, ORK_NO_INSTANCE, ORK_SHARED_TYPE_INFO_SIZE));
    std::memcpy(copy, fewer.get(), sizeof *copy);
    handle->type_table_add_fn(handle->type_table, 0, copy->luid_text, copy);
    copy->varinfo->entries[125].create_count = 7;
    EXPECT_EQ(ork_update_variant_info(handle.get(), 0, copy, many.get(), 0), 0u);
    EXPECT_EQ(copy->varinfo->n_variants, 127);
    EXPECT_EQ(copy->varinfo->entries[125].create_count, 7u);
    EXPECT_EQ(copy->varinfo->entries[126].used_length, 20u + 126);
    copy->varinfo->entries[126].create_count = 9;
    ork_update_variant_info(handle.get(), 0, copy, fewer.get(), 0);
    EXPECT_EQ(copy->varinfo->entries[126].create_count, 9u);
  }
  ork_storage_destroy(storage);
}

}  // namespace
}  // namespace platform_test
