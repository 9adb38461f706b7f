// The sites of the functions that every record has once.
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <span>

#include "fwe_ui_wayfind/module.h"
#include "stage.h"
#include "texts.h"

namespace trace_sites {
namespace {

constexpr uint8_t oid_mapped = 0x01;
constexpr uint8_t nested = 0x04;
constexpr uint8_t ra_data = 0x20;

// The functions of one record, called with void pointers.
struct Record {
  const wayfind_record& schema;

  std::string name(const char* suffix) const { return std::string(schema.name) + suffix; }
  template <class F>
  F* call(const char* suffix) const {
    return function<F>(schema.functions, suffix);
  }
  void* create(ork_handle* handle) const {
    return call<void*(ork_handle*, uint32_t)>("_create")(handle, instance);
  }
  void initialize(const TickingHandle& handle, void* object, const ork_type_info* type,
                  uint32_t flags, uint8_t* base) const {
    call<void(ork_handle*, uint32_t, void*, const ork_type_info*, uint32_t, uint32_t, uint32_t,
              uint8_t*, uint32_t*)>("_initialize")(handle, instance, object, type, 0, 0, flags,
                                                   base, &handle.err);
  }
  void destroy_internal(ork_handle* handle, void* object) const {
    call<void(ork_handle*, uint32_t, void*, uint32_t)>("_destroy_internal")(handle, instance,
                                                                            object, 1);
  }
  void set(const TickingHandle& handle, void* to, void* from) const {
    call<void(ork_handle*, uint32_t, void*, const void*, uint32_t*)>("_set")(handle, instance, to,
                                                                             from, &handle.err);
  }
  void unmarshal(const TickingHandle& handle, const uint8_t* image, size_t size,
                 void* object) const {
    call<uint32_t(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t, uint32_t*)>(
        "_unmarshal")(handle, instance, image, object, static_cast<int32_t>(size), 0, &handle.err);
  }
  // Zeroed, and of the largest size that an object of this record has.
  static void* block() { return new uint64_t[128]{}; }
};

std::vector<Record> records() {
  std::vector<Record> all;
  for (const wayfind_record& record : std::span(wayfind_records, wayfind_record_count))
    all.push_back({record});
  return all;
}

// An image without fields, of a variant that lies in front of the first, and a jump over some bytes
// behind it.
constexpr uint8_t image[32] = {0xFF, 0, 0, 0, 0, 10};

TEST(RecordSites, create) {
  for (const Record& record : records()) {
    expect_trace({record.name("_create_internal"),
                  "error in " + record.name(" create: %s"),
                  "error",
                  {words_of(EIO)}},
                 [&] {
                   const TickingHandle handle;
                   const auto lookup = spy::fail(ork_domain_lookup_variant, EIO);
                   record.create(handle);
                 });
    const auto expect_corrupted = [&](const std::function<void(ork_handle*)>& ask_for_size) {
      expect_trace({record.name("_sizeof"), text::corrupted, "fatal", {}}, [&] {
        const TickingHandle handle;
        handle.corrupt();
        ask_for_size(handle);
      });
    };
    expect_corrupted(
        [&](ork_handle* handle) { record.call<uint32_t(ork_handle*)>("_sizeof")(handle); });
    expect_corrupted([&](ork_handle* handle) {
      record.call<uint32_t(ork_handle*, const void*, uint32_t, uint32_t)>("_sizeof_internal")(
          handle, nullptr, 1, 0);
    });
    expect_corrupted([&](ork_handle* handle) { record.create(handle); });
  }
}

// The mode is read again behind an allocation, behind the count of a new object and behind the
// announcement of a copy.
TEST(RecordSites, handle_that_changes_under_way) {
  static const TickingHandle* handle;
  for (const Record& record : records()) {
    const auto expect_corrupted = [&](const char* function, const Action& action) {
      expect_trace({record.name(function), text::corrupted, "fatal", {}}, [&] {
        handle = new TickingHandle;
        action();
      });
    };
    expect_corrupted("_sizeof", [&] {
      (*handle)->alloc_fn = [](auto...) -> void* {
        handle->corrupt();
        return Record::block();
      };
      record.create(*handle);
    });
    expect_corrupted("_initialize", [&] {
      const auto counted = spy::replace(orklib_type_stats_create_object, [](auto...) {
        handle->corrupt();
        return 0u;
      });
      record.initialize(*handle, Record::block(), record.schema.type, 0, nullptr);
    });
    expect_corrupted("_set", [&] {
      void* to = record.create(*handle);
      void* from = record.create(*handle);
      (*handle)->write_notify_fn = [](auto...) { handle->corrupt(); };
      record.set(*handle, to, from);
    });
  }
}

TEST(RecordSites, initialize) {
  for (const Record& record : records()) {
    const ork_type_info& type = *record.schema.type;
    const std::string name = record.name("_initialize");
    expect_trace({name, text::corrupted, "fatal", {}}, [&] {
      const TickingHandle handle;
      handle.corrupt();
      record.initialize(handle, record.block(), &type, 0, nullptr);
    });
    expect_trace({name, text::no_variants, "fatal", {}}, [&] {
      const TickingHandle handle;
      record.initialize(handle, record.block(), without_variants(type), 0, nullptr);
    });
    expect_trace({name,
                  text::variant_beyond,
                  "info",
                  {std::to_string(record.schema.variants - 1), minus_one}},
                 [&] {
                   const TickingHandle handle;
                   const auto newest = spy::answer(ork_domain_lookup_variant,
                                                   static_cast<int8_t>(record.schema.variants - 1));
                   record.initialize(handle, record.block(), with_fewer_variants(type), 0, nullptr);
                 });
    expect_trace({name, text::no_state_base, "error", {}}, [&] {
      const TickingHandle handle(ORK_TRACKING_ON);
      record.initialize(handle, record.block(), &type, nested, nullptr);
    });
    expect_trace({record.name("_set_instance_embedded"), text::embed_object, "error", {}}, [&] {
      const TickingHandle handle;
      record.call<void(ork_handle*, uint32_t, void*)>("_set_instance_embedded")(handle, instance,
                                                                                nullptr);
    });
  }
}

TEST(RecordSites, references) {
  for (const Record& record : records()) {
    const auto count = [&](int error) {
      const TickingHandle handle;
      handle.err = static_cast<uint32_t>(error);
      record.call<uint32_t(ork_handle*, uint32_t, const void*, uint32_t*)>("_get_oid_count")(
          handle, instance, nullptr, &handle.err);
    };
    const auto list = [&](int error) {
      const TickingHandle handle;
      handle.err = static_cast<uint32_t>(error);
      record.call<void(ork_handle*, uint32_t, const void*, void**, uint32_t, uint32_t*)>(
          "_get_object_references")(handle, instance, nullptr, nullptr, 0, &handle.err);
    };
    expect_trace({record.name("_get_oid_count"), text::oid_count_error, "error", {}},
                 [&] { count(EIO); });
    expect_trace({record.name("_get_oid_count"), text::oid_count_object, "error", {}},
                 [&] { count(0); });
    expect_trace({record.name("_get_object_references"), text::references_error, "error", {}},
                 [&] { list(EIO); });
    expect_trace({record.name("_get_object_references"), text::references_object, "error", {}},
                 [&] { list(0); });
  }
}

TEST(RecordSites, destroy_of_a_mapped_object) {
  for (const Record& record : records()) {
    const std::string type = record.schema.name;
    const auto destroy_mapped = [&] {
      const TickingHandle handle;
      void* object = record.create(handle);
      kit::header(object).obj_flags |= oid_mapped;
      record.destroy_internal(handle, object);
    };
    expect_trace(
        {record.name("_destroy_internal"), text::mapping_stays(type), "error", {words_of(EBUSY)}},
        [&] {
          const auto mapping = spy::fail(ork_request_oid_mapping_destroy, EBUSY);
          destroy_mapped();
        });
    expect_trace({record.name("_destroy_internal"), text::has_references(type), "info", {}}, [&] {
      const auto mapping = spy::answer(ork_request_oid_mapping_destroy, 0);
      destroy_mapped();
    });
    expect_trace({record.name("_destroy_internal"), text::mapping_removed(type), "debug", {}}, [&] {
      const auto mapping = spy::answer(ork_request_oid_mapping_destroy, 1);
      destroy_mapped();
    });
    expect_trace(
        {record.name("_destroy_internal"), text::mapping_stays(type), "error", {words_of(EIO)}, 1},
        [&] {
          const TickingHandle handle;
          void* object = record.create(handle);
          kit::header(object).obj_flags |= ra_data;
          handle->hd_mapping = object;  // any map but none
          const auto mapping =
              spy::replace(ork_hd_mapping_destroy, [](auto, auto, auto, uint32_t* err) -> uint32_t {
                *err = EIO;
                return 0;
              });
          record.destroy_internal(handle, object);
        });
  }
}

TEST(RecordSites, destroy_of_an_address_with_references) {
  for (const Record& record : records()) {
    for (const wayfind_field& field : std::span(record.schema.fields, record.schema.field_count)) {
      if (field.kind != WAYFIND_IP_ADDRESS) continue;
      const std::string name = record.name("_destroy_internal.") + field.name;
      void* const reference = reinterpret_cast<void*>(uintptr_t{0xABC0});
      const auto destroy = [&](uint32_t list_error, uint32_t count_error) {
        const TickingHandle handle;
        void* object = record.create(handle);
        const void* at = kit::bytes(object) + field.offset;
        const auto count =
            spy::replace(ip_address_get_oid_count,
                         [at](auto, auto, auto address, auto) { return address == at ? 1u : 0u; });
        const auto list =
            spy::replace(ip_address_get_object_references,
                         [&](auto, auto, auto, void** references, auto, uint32_t* err) {
                           references[0] = reference;
                           *err = list_error;
                         });
        const auto update =
            spy::replace(orklib_lookup_and_update_oid_ref_count,
                         [&](auto, auto, auto, auto, uint32_t* err) { *err = count_error; });
        record.destroy_internal(handle, object);
      };
      expect_trace({name, text::references_failed(record.schema.name), "error", {words_of(EIO)}},
                   [&] { destroy(EIO, 0); });
      expect_trace({name,
                    text::reference_stays(record.schema.name),
                    "error",
                    {digits_of(reference), words_of(ENOENT)}},
                   [&] { destroy(0, ENOENT); });
    }
  }
}

TEST(RecordSites, destroy_of_a_broken_object) {
  for (const Record& record : records()) {
    const std::string name = record.name("_destroy_internal");
    const auto destroy_typed = [&](const ork_type_info* type) {
      const TickingHandle handle;
      void* object = record.create(handle);
      kit::store(object, type);
      record.destroy_internal(handle, object);
    };
    expect_trace({name, text::corrupted, "fatal", {}}, [&] {
      const TickingHandle handle(ORK_TRACKING_ON);
      void* object = record.create(handle);
      handle.corrupt();
      record.destroy_internal(handle, object);
    });
    expect_trace({name, text::type_corrupted, "fatal", {}}, [&] { destroy_typed(nullptr); });
    expect_trace({name, text::no_variants, "fatal", {}},
                 [&] { destroy_typed(without_variants(*record.schema.type)); });
    expect_trace({name,
                  text::variant_beyond,
                  "info",
                  {std::to_string(record.schema.variants - 1), minus_one}},
                 [&] { destroy_typed(with_fewer_variants(*record.schema.type)); });
  }
}

TEST(RecordSites, set) {
  for (const Record& record : records()) {
    const auto set = [&](bool corrupt) {
      const TickingHandle without;
      const TickingHandle tracking(ORK_TRACKING_ON);
      void* to = record.create(without);
      void* from = record.create(without);
      if (corrupt) tracking.corrupt();
      record.set(tracking, to, from);
    };
    expect_trace({record.name("_set"), text::corrupted, "fatal", {}}, [&] { set(true); });
    expect_trace({record.name("_set"), text::not_tracked, "error", {}}, [&] { set(false); });
  }
}

// A variant in front of the first has no fields, so that no embedded record is asked before the
// record itself.
TEST(RecordSites, other_forms) {
  for (const Record& record : records()) {
    const auto object_of = [&](const TickingHandle& handle) {
      void* object = record.create(handle);
      kit::header(object).variant = -1;
      handle.corrupt();
      return object;
    };
    expect_trace({record.name("_len"), text::corrupted, "fatal", {}}, [&] {
      const TickingHandle handle;
      void* object = object_of(handle);
      record.call<uint32_t(ork_handle*, uint32_t, const void*)>("_len")(handle, instance, object);
    });
    expect_trace({record.name("_marshal"), text::corrupted, "fatal", {}}, [&] {
      const TickingHandle handle;
      void* object = object_of(handle);
      uint8_t buffer[64];
      record.call<uint32_t(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*)>(
          "_marshal")(handle, instance, buffer, object, sizeof buffer, &handle.err);
    });
    expect_trace({record.name("_to_xml"), text::corrupted, "fatal", {}}, [&] {
      const TickingHandle handle;
      void* object = object_of(handle);
      char buffer[64];
      record.call<uint32_t(ork_handle*, uint32_t, const char*, char*, void*, uint32_t, uint8_t,
                           uint32_t*)>("_to_xml")(handle, instance, "tag", buffer, object,
                                                  sizeof buffer, 0, &handle.err);
    });
  }
}

TEST(RecordSites, unmarshal) {
  for (const Record& record : records()) {
    const std::string name = record.name("_unmarshal");
    expect_trace({name, text::tracking_mismatch, "fatal", {}}, [&] {
      const TickingHandle without;
      const TickingHandle tracking(ORK_TRACKING_ON);
      record.unmarshal(tracking, image, sizeof image, record.create(without));
    });
    expect_trace({name, text::corrupted, "fatal", {}}, [&] {
      const TickingHandle handle;
      void* object = record.create(handle);
      handle.corrupt();
      record.unmarshal(handle, image, sizeof image, object);
    });
    // Six bytes are read; the jump starts behind variant and flags.
    expect_trace({name, text::jump, "info", {"6", "2", "10"}}, [&] {
      const TickingHandle handle;
      record.unmarshal(handle, image, sizeof image, record.create(handle));
    });
  }
}

int print_nothing(const char*, ...) { return 0; }

TEST(RecordSites, variant_dump) {
  expect_trace({"fwe_ui_wayfind_type_variant_dump", text::dump_without_variants, "error", {}}, [] {
    auto* type = const_cast<ork_type_info*>(wayfind_records[3].type);
    const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto first = reinterpret_cast<uintptr_t>(type) & ~(page - 1);
    mprotect(reinterpret_cast<void*>(first), 2 * page, PROT_READ | PROT_WRITE);
    type->varinfo = nullptr;
    fwe_ui_wayfind_type_variant_dump(print_nothing);
  });
}

}  // namespace
}  // namespace trace_sites
