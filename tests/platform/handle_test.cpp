#include "support.h"

namespace platform_test {
namespace {

TEST(Handle, fresh_one_has_no_error_no_bundle_no_peer) {
  const Handle handle;
  EXPECT_EQ(ork_handle_last_error(handle.get()), 0u);
  EXPECT_EQ(handle->bundle_ctx, 0u);
  EXPECT_EQ(handle->bundle_send_list.next, &handle->bundle_send_list);
  EXPECT_EQ(handle->bundle_receive_list.prev, &handle->bundle_receive_list);
  EXPECT_STREQ(handle->domain_name, "newest");
  EXPECT_EQ(handle->shared_types, 0u);
  EXPECT_EQ(handle->sttr_info, nullptr);
  EXPECT_EQ(handle->cr_instance, ORK_NO_INSTANCE);
}

TEST(Handle, tracking_is_absent_off_or_on) {
  const Handle handle([](ork_options& options) { options.tracking = ORK_TRACKING_OFF; });
  EXPECT_EQ(handle->sttr_info->sttr_mode, 0xDDDDu);
  ork_handle_set_tracking(handle.get(), ORK_TRACKING_ON);
  EXPECT_EQ(handle->sttr_info->sttr_mode, 0xEEEEu);
  ork_handle_set_tracking(handle.get(), ORK_TRACKING_ABSENT);
  EXPECT_EQ(handle->sttr_info, nullptr);
}

TEST(Handle, shared_storage_sets_shared_types) {
  uint32_t err = 0;
  ork_storage* storage = ork_storage_create(0, &err);
  {
    const auto on_storage = [&](ork_options& options) { options.storage = storage; };
    const Handle a(on_storage);
    const Handle b(on_storage);
    EXPECT_EQ(a->shared_types, 1u);
    EXPECT_EQ(a->mem_pool, b->mem_pool);
    EXPECT_EQ(a->type_table, b->type_table);
  }
  ork_storage_destroy(storage);
}

TEST(Errors, store_reaches_the_cr_slot_only_while_cr_mode_runs) {
  const Handle handle;
  ork_store_err(handle.get(), 22);
  EXPECT_EQ(ork_handle_last_error(handle.get()), 22u);
  EXPECT_EQ(handle->cr_error, 0u);
  handle->cr_active = 1;
  ork_store_err(handle.get(), 12);
  ork_store_err(handle.get(), 90);
  EXPECT_EQ(handle->cr_error, 12u);
  ork_clear_last_error(handle.get());
  EXPECT_EQ(ork_handle_last_error(handle.get()), 0u);
  EXPECT_EQ(handle->cr_error, 12u);
}

TEST(Errors, epoch_error_leaves_the_slot_alone_except_for_a_refused_message) {
  const Handle handle;
  uint32_t err = 0;
  ork_store_epoch_err(handle.get(), 43, &err);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(ork_handle_last_error(handle.get()), 43u);
  ork_store_epoch_err(handle.get(), 52, &err);
  EXPECT_EQ(err, 52u);
  ork_store_epoch_err(handle.get(), 43, nullptr);
}

TEST(Errors, strict_handle_writes_the_slot_for_both) {
  const Handle handle([](ork_options& options) { options.strict_epoch = 1; });
  uint32_t err = 0;
  ork_store_epoch_err(handle.get(), 43, &err);
  EXPECT_EQ(err, 43u);
  ork_store_epoch_err(handle.get(), 52, &err);
  EXPECT_EQ(err, 43u) << "the first error stays";
}

TEST(Handle, workspace_has_the_size_asked_for) {
  const Handle handle([](ork_options& options) { options.workspace_size = 777; });
  uint8_t* ws = nullptr;
  int32_t ws_len = 0;
  orklib_get_handle_ws(handle.get(), &ws, &ws_len);
  EXPECT_NE(ws, nullptr);
  EXPECT_EQ(ws_len, 777);
}

struct Seen {
  std::vector<std::string> calls;
};

TEST(Observers, are_told_of_writes_and_of_the_database_hooks) {
  Seen seen;
  const Handle handle([&](ork_options& options) {
    options.observers.ctx = &seen;
    options.observers.write_notify = [](void* ctx, ork_handle*, const void*, size_t length,
                                        uint32_t, const void*) {
      static_cast<Seen*>(ctx)->calls.push_back("write " + std::to_string(length));
    };
    options.observers.containment = [](void* ctx, uint32_t, const void*, const void*) {
      static_cast<Seen*>(ctx)->calls.push_back("containment");
    };
    options.observers.set_dirty = [](void* ctx, uint32_t, const void*) {
      static_cast<Seen*>(ctx)->calls.push_back("dirty");
    };
    options.observers.set_destroy = [](void* ctx, uint32_t, const void*) {
      static_cast<Seen*>(ctx)->calls.push_back("destroy");
    };
    options.observers.set_detach = [](void* ctx, uint32_t instance, const void* obj) {
      EXPECT_EQ(*static_cast<const uint64_t*>(obj), 5u);
      static_cast<Seen*>(ctx)->calls.push_back("detach " + std::to_string(instance));
    };
  });
  uint32_t err = 0;
  uint64_t word = 0;
  u_int64_set_value(handle.get(), 0, &word, 5, &err);
  orkdb_record_containment2(handle.get(), 0, &word, nullptr, 1);
  orkdb_plat_set_dirty(handle.get(), 0, &word);
  orkdb_plat_set_destroy(handle.get(), 0, &word);
  orkdb_plat_set_detach(handle.get(), 3, &word, 0);
  EXPECT_EQ(seen.calls,
            (std::vector<std::string>{"write 8", "containment", "dirty", "destroy", "detach 3"}));
}

TEST(Modules, root_is_count_reserved_tail) {
  EXPECT_EQ(ork_module_tot_root.count, 0u);
  EXPECT_EQ(ork_module_tot_root.tail, &ork_module_tot_root.head);
  EXPECT_EQ(offsetof(ork_module_root, tail), 16u);
}

}  // namespace
}  // namespace platform_test
