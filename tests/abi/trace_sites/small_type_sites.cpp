// The sites of enums and the flag set.
#include <cerrno>
#include <span>

#include "stage.h"
#include "texts.h"

namespace trace_sites {
namespace {

class SmallTypeSites : public testing::Test {
 protected:
  template <class Visit>
  static void each(Visit visit) {
    for (const wayfind_small_type& type : std::span(wayfind_small_types, wayfind_small_type_count))
      visit(type, std::string(type.name));
  }

  template <class F>
  static F* call(const wayfind_small_type& type, const char* suffix) {
    return function<F>(type.functions, suffix);
  }
  static void* create(const wayfind_small_type& type, ork_handle* handle) {
    return call<void*(ork_handle*, uint32_t)>(type, "_create")(handle, instance);
  }
};

TEST_F(SmallTypeSites, create) {
  each([](const wayfind_small_type& type, const std::string& name) {
    expect_trace(
        {name + "_create_internal", "error in " + name + " create %s", "error", {words_of(EIO)}},
        [&] {
          const TickingHandle handle;
          const auto lookup = spy::fail(ork_domain_lookup_variant, EIO);
          create(type, handle);
        });
    expect_trace({name + "_set_instance_embedded", text::small_embed_object, "error", {}}, [&] {
      const TickingHandle handle;
      call<void(ork_handle*, uint32_t, void*)>(type, "_set_instance_embedded")(handle, instance,
                                                                               nullptr);
    });
  });
}

TEST_F(SmallTypeSites, initialize) {
  each([](const wayfind_small_type& type, const std::string& name) {
    const auto initialize = [&](const ork_type_info* info) {
      const TickingHandle handle;
      const auto newest = spy::answer(ork_domain_lookup_variant, int8_t{0});
      uint64_t object[4] = {};
      call<void(ork_handle*, uint32_t, void*, const ork_type_info*, uint32_t, uint32_t, uint32_t,
                uint8_t*, uint32_t*)>(type, "_initialize")(handle, instance, object, info, 0, 0, 0,
                                                           nullptr, &handle.err);
    };
    expect_trace({name + "_initialize", text::no_variants, "fatal", {}},
                 [&] { initialize(without_variants(*type.type)); });
    expect_trace({name + "_initialize", text::variant_beyond, "info", {"0", minus_one}},
                 [&] { initialize(with_fewer_variants(*type.type)); });
  });
}

TEST_F(SmallTypeSites, references) {
  each([](const wayfind_small_type& type, const std::string& name) {
    const auto count = [&](int error) {
      const TickingHandle handle;
      handle.err = static_cast<uint32_t>(error);
      call<uint32_t(ork_handle*, uint32_t, const void*, uint32_t*)>(type, "_get_oid_count")(
          handle, instance, nullptr, &handle.err);
    };
    const auto list = [&](int error) {
      const TickingHandle handle;
      handle.err = static_cast<uint32_t>(error);
      call<void(ork_handle*, uint32_t, const void*, void**, uint32_t, uint32_t*)>(
          type, "_get_object_references")(handle, instance, nullptr, nullptr, 0, &handle.err);
    };
    expect_trace({name + "_get_oid_count", text::oid_count_error, "error", {}},
                 [&] { count(EIO); });
    expect_trace({name + "_get_oid_count", text::oid_count_object, "error", {}}, [&] { count(0); });
    expect_trace({name + "_get_object_references", text::references_error, "error", {}},
                 [&] { list(EIO); });
    expect_trace({name + "_get_object_references", text::references_object, "error", {}},
                 [&] { list(0); });
  });
}

TEST_F(SmallTypeSites, destroy) {
  each([](const wayfind_small_type& type, const std::string& name) {
    const auto destroy = [&](const ork_type_info* info) {
      const TickingHandle handle;
      void* object = create(type, handle);
      kit::store(object, info);
      call<void(ork_handle*, uint32_t, void*, uint32_t)>(type, "_destroy_internal")(
          handle, instance, object, 1);
    };
    expect_trace({name + "_destroy_internal", text::type_corrupted, "fatal", {}},
                 [&] { destroy(nullptr); });
    expect_trace({name + "_destroy_internal", text::no_variants, "fatal", {}},
                 [&] { destroy(without_variants(*type.type)); });
    expect_trace({name + "_destroy_internal", text::variant_beyond, "info", {"0", minus_one}},
                 [&] { destroy(with_fewer_variants(*type.type)); });
  });
}

TEST_F(SmallTypeSites, jump_of_the_flag_set) {
  each([](const wayfind_small_type& type, const std::string& name) {
    if (!type.is_flag_set) return;
    // Variant, four bytes of jump, bits: the jump starts behind the first of six bytes.
    expect_trace({name + "_unmarshal", text::jump, "info", {"6", "1", "12"}}, [&] {
      const TickingHandle handle;
      const uint8_t image[32] = {0, 0, 0, 0, 12, 1};
      call<uint32_t(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t, uint32_t*)>(
          type, "_unmarshal")(handle, instance, image, create(type, handle), sizeof image, 0,
                              &handle.err);
    });
  });
}

}  // namespace
}  // namespace trace_sites
