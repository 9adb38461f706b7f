#include "bench/operations.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>

#include "bench/bare.h"
#include "bench/table_driven.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "tests/support/exports.h"
#include "tests/support/sample.h"

namespace {

constexpr uint32_t instance = 1;
constexpr uint32_t elements = 8;

ork_handle* make_handle() {
  ork_options options;
  ork_options_init(&options);
  uint32_t err = 0;
  ork_handle* handle = ork_handle_create(&options, &err);
  if (handle == nullptr) std::abort();
  return handle;
}

// A filled record, a fresh one to read into, an equal one to compare with, and room for every form.
struct Subject {
  const wayfind_record& type;
  ork_handle* handle;
  void* filled = nullptr;
  void* equal = nullptr;
  void* target = nullptr;
  uint32_t err = 0;
  int32_t image_length = 0;
  uint8_t image[4096] = {};
  uint8_t out[4096] = {};
  char text[65536] = {};
  uint64_t sink = 0;

  Subject(ork_handle* with, const wayfind_record& of) : type(of), handle(with) {
    for (void** object : {&filled, &equal, &target}) *object = sample::create(handle, type);
    sample::fill(handle, type, filled, elements);
    sample::fill(handle, type, equal, elements);
    const auto marshal =
        function<uint32_t (*)(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*)>(
            "_marshal");
    image_length =
        static_cast<int32_t>(marshal(handle, instance, image, filled, sizeof image, &err));
    if (err != 0) std::abort();
  }

  template <class Prototype>
  Prototype function(const char* suffix) const {
    return kit::function<Prototype>(type.functions, suffix);
  }
};

class Catalogue {
 public:
  void library(Subject& s) {
    using Marshal = uint32_t (*)(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);
    using Unmarshal =
        uint32_t (*)(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t, uint32_t*);
    using Length = uint32_t (*)(ork_handle*, uint32_t, const void*);
    using Print = uint32_t (*)(ork_handle*, uint32_t, char*, uint32_t, const char*, const void*,
                               uint32_t, uint32_t*);
    using ToXml = uint32_t (*)(ork_handle*, uint32_t, const char*, char*, void*, uint32_t, uint8_t,
                               uint32_t*);
    using Compare = int32_t (*)(const void*, const void*);
    using Hash = uint32_t (*)(const void*, uint32_t);
    add("marshal", s, "library", [&s, f = s.function<Marshal>("_marshal")] {
      s.sink += f(s.handle, instance, s.out, s.filled, sizeof s.out, &s.err);
    });
    add("unmarshal", s, "library", [&s, f = s.function<Unmarshal>("_unmarshal")] {
      s.sink += f(s.handle, instance, s.image, s.target, s.image_length, 1, &s.err);
    });
    add("length", s, "library",
        [&s, f = s.function<Length>("_len")] { s.sink += f(s.handle, instance, s.filled); });
    add("print", s, "library", [&s, f = s.function<Print>("_print")] {
      s.text[0] = '\0';
      s.sink += f(s.handle, instance, s.text, 0, "record", s.filled, sizeof s.text, &s.err);
    });
    add("to_xml", s, "library", [&s, f = s.function<ToXml>("_to_xml")] {
      s.sink += f(s.handle, instance, "record", s.text, s.filled, sizeof s.text, 0, &s.err);
    });
    add("compare", s, "library", [&s, f = s.function<Compare>("_compare")] {
      s.sink += static_cast<uint32_t>(f(s.filled, s.equal));
    });
    add("hash", s, "library", [&s, f = s.function<Hash>("_hash")] { s.sink += f(s.filled, 1); });
    // No encoder can beat moving the image once.
    add("marshal", s, "floor", [&s] {
      std::memcpy(s.out, s.image, static_cast<size_t>(s.image_length));
      s.sink += s.out[0];
    });
  }

  // The type's own peers: no variable array in it.
  template <class Record>
  void peers(Subject& s) {
    const auto wire = [&s] { return bare::Wire{s.handle, instance, &s.err}; };
    add("marshal", s, "bare", [&s, wire] {
      s.sink += bare::marshal(wire(), s.out, static_cast<const Record*>(s.filled), sizeof s.out);
    });
    add("unmarshal", s, "bare", [&s, wire] {
      s.sink += bare::unmarshal(wire(), s.image, static_cast<Record*>(s.target), s.image_length);
    });
    add("length", s, "bare",
        [&s, wire] { s.sink += bare::length(wire(), static_cast<const Record*>(s.filled)); });
    add("marshal", s, "table", [&s, wire] {
      s.sink += table_driven::marshal(wire(), s.out, s.filled, sizeof s.out, s.type);
    });
    add("unmarshal", s, "table", [&s, wire] {
      s.sink += table_driven::unmarshal(wire(), s.image, s.target, s.image_length, s.type);
    });
    add("length", s, "table",
        [&s, wire] { s.sink += table_driven::length(wire(), s.filled, s.type); });
  }

  void accessors(Subject& s) {
    auto* mem = static_cast<fwe_cl_wayfind_mem_st*>(s.filled);
    auto* raw = static_cast<bare::Mem*>(s.filled);
    add("get_value", s, "library", [&s, mem] {
      s.sink += fwe_cl_wayfind_mem_st_fwe_num_get_value(s.handle, instance, mem, &s.err);
    });
    add("get_value", s, "bare", [&s, raw] {
      ork_clear_last_error(s.handle);
      if (ork_get_instance_variant(raw, 1, 0) < 0) return;
      const uint32_t* at = u_int32_get(s.handle, instance, &raw->fwe_num, &s.err);
      if (s.handle->db_recording == 0) s.sink += u_int32_get_value(s.handle, instance, at, &s.err);
    });
    add("set_value", s, "library",
        [&s, mem] { fwe_cl_wayfind_mem_st_fwe_num_set_value(s.handle, instance, mem, 7, &s.err); });
    add("set_value", s, "bare", [&s, raw] {
      ork_clear_last_error(s.handle);
      orklib_adjust_variant(s.handle, instance, raw, ork_get_manifested_type_info(raw), 0, &s.err);
      if (ork_get_instance_variant(raw, 1, 0) < 0) return;
      ork_clear_last_error(s.handle);
      if (ork_get_instance_variant(raw, 1, 0) < 0) return;
      uint32_t* at = u_int32_get(s.handle, instance, &raw->fwe_num, &s.err);
      if (s.handle->db_recording == 0) u_int32_set_value(s.handle, instance, at, 7, &s.err);
    });
  }

  std::vector<Operation> take() { return std::move(operations_); }

 private:
  void add(const char* what, const Subject& s, const char* who, std::function<void()> run) {
    operations_.push_back({std::string(what) + "/" + s.type.name + "/" + who, std::move(run)});
  }
  std::vector<Operation> operations_;
};

// Never destroyed: operations refer to it until the process ends.
Subject& subject(ork_handle* handle, const char* name) {
  static auto& subjects = *new std::deque<Subject>;
  const wayfind_record* type = kit::find_record(name);
  if (type == nullptr) std::abort();
  return subjects.emplace_back(handle, *type);
}

}  // namespace

std::vector<Operation> operations() {
  ork_handle* handle = make_handle();
  Catalogue catalogue;
  Subject& mem = subject(handle, "fwe_cl_wayfind_mem_st");
  Subject& hop = subject(handle, "fwe_cl_wayfind_hop_chan_data");
  for (Subject* s : {&mem, &hop, &subject(handle, "fwe_cl_wayfind_chan_st"),
                     &subject(handle, "fwe_cl_wayfind_select_all_policies")}) {
    catalogue.library(*s);
  }
  catalogue.peers<bare::Mem>(mem);
  catalogue.peers<bare::HopChanData>(hop);
  catalogue.accessors(mem);
  std::vector<Operation> all = catalogue.take();
  all.push_back({"call/nothing/floor", [] {}});
  return all;
}
