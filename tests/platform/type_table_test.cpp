#include "support.h"

namespace platform_test {
namespace {

// Handles on shared storage with one type to enter.
class TypeTable : public testing::Test {
 protected:
  TypeTable()
      : storage_(ork_storage_create(0, &err_)),
        type_(1, "type", {20, 30}),
        handle_([&](ork_options& options) { options.storage = storage_; }) {
    current_ = &type_;
  }
  ~TypeTable() override {
    handle_.destroy();
    ork_storage_destroy(storage_);
  }

  // What a module does with its descriptors.
  static void enter(ork_handle* handle, uint32_t instance, uint32_t*) {
    const ork_type_info* type = current_->get();
    auto* copy = static_cast<ork_type_info*>(
        handle->shared_alloc_fn(handle->shared_pool, ORK_NO_INSTANCE, ORK_SHARED_TYPE_INFO_SIZE));
    std::memcpy(copy, type, sizeof *type);
    copy->shared = handle->shared_types;
    handle->type_table_add_fn(handle->type_table, instance, copy->luid_text, copy);
    ork_update_variant_info(handle, instance, copy, type, 1);
  }

  static inline const TestType* current_ = nullptr;
  uint32_t err_ = 0;
  ork_storage* storage_;
  TestType type_;
  Handle handle_;
};

TEST_F(TypeTable, first_ask_fills_the_table) {
  EXPECT_EQ(handle_->type_table_find_fn(handle_->type_table, 0, type_.get()->luid_text), nullptr);
  const ork_type_info* copy = ork_type_info_ptr_get(handle_.get(), 0, type_.get(), enter);
  ASSERT_NE(copy, type_.get());
  EXPECT_EQ(copy->shared, 1u);
  EXPECT_NE(copy->varinfo, type_.get()->varinfo) << "a table of its own";
  EXPECT_EQ(copy->varinfo->n_variants, 2);
  EXPECT_EQ(ork_type_info_ptr_get(handle_.get(), 0, type_.get(), nullptr), copy);
}

TEST_F(TypeTable, newer_module_brings_its_variants_and_keeps_the_counts) {
  const ork_type_info* entered = ork_type_info_ptr_get(handle_.get(), 0, type_.get(), enter);
  auto* copy = const_cast<ork_type_info*>(entered);
  copy->varinfo->entries[1].create_count = 5;
  const TestType newer(1, "type", {20, 30, 40});
  EXPECT_EQ(ork_update_variant_info(handle_.get(), 0, copy, newer.get(), 0), 0u);
  EXPECT_EQ(copy->varinfo->n_variants, 3);
  EXPECT_EQ(copy->varinfo->entries[1].create_count, 5u);
  EXPECT_EQ(copy->varinfo->entries[2].used_length, 40u);
  EXPECT_EQ(ork_update_variant_info(handle_.get(), 0, copy, type_.get(), 0), 0u);
  EXPECT_EQ(copy->varinfo->n_variants, 3) << "an older module takes nothing away";
}

TEST_F(TypeTable, own_types_enter_themselves) {
  alignas(8) ork_ip_address address{};
  uint32_t err = 0;
  ip_address_initialize(handle_.get(), 0, &address, &_ip_address_type_info_internal, 0, 0,
                        OBJ_NESTED, nullptr, &err);
  const ork_type_info* type = ork_get_manifested_type_info(&address);
  ASSERT_NE(type, &_ip_address_type_info_internal);
  EXPECT_STREQ(type->name, "ip_address");
  EXPECT_EQ(std::memcmp(type->luid, _ip_address_type_info_internal.luid, sizeof type->luid), 0);
}

}  // namespace
}  // namespace platform_test
