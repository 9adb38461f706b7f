// What tests of the module stand on: handles with the spy in front of them, and the exported
// functions by type and field name.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ork/orklib.h"
#include "ork/platform.h"
#include "support/spy.h"
#include "support/told_tables.h"
#include "tools/schema/wayfind_schema.h"

namespace fixture {

// The instance that tests pass, unless they are about it.
constexpr uint32_t instance = 7;

// ---- Handles ----------------------------------------------------------------

struct Mode {
  bool shared = false;
  ork_tracking tracking = ORK_TRACKING_ABSENT;
  bool recording = false;
  uint32_t cr_instance = instance;

  std::string text() const {
    const char* const words[] = {"absent", "off", "on"};
    return std::string(shared ? "shared" : "private") + ", tracking " + words[tracking] +
           (recording ? ", recording" : "");
  }
};

inline constexpr Mode plain{};
inline constexpr Mode tracked{.tracking = ORK_TRACKING_ON};
inline constexpr Mode recorded{.recording = true};

// Private and shared, tracking absent, off and on.
inline std::vector<Mode> all_modes() {
  std::vector<Mode> modes;
  for (const bool shared : {false, true}) {
    for (const ork_tracking tracking : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
      modes.push_back({.shared = shared, .tracking = tracking});
    }
  }
  return modes;
}

// A handle that is observed, with an error slot of its own. At its end it fails the test for every
// block that is still live, unless leaks were expected.
class Handle {
 public:
  explicit Handle(const Mode& mode = plain) : mode_(mode) {
    uint32_t problem = 0;
    if (mode.shared) {
      storage_ = ork_storage_create(0, &problem);
    }
    ork_options options;
    ork_options_init(&options);
    options.tracking = mode.tracking;
    options.storage = storage_;
    options.cr_instance = mode.cr_instance;
    options.db_recording = mode.recording;
    handle_ = ork_handle_create(&options, &problem);
    if (!handle_) {
      throw std::runtime_error("no handle");
    }
    spy::observe(handle_);
    spy::name_at(&err, "err");
    spy::name_at(&handle_->cr_error, "cr_error");
    ork_handle_memory(handle_, &at_first_);
  }
  ~Handle() {
    if (!leaks_expected_) {
      EXPECT_EQ(memory().live_blocks, 0u) << "blocks of a test that still live: " << mode_.text();
    }
    spy::forget(handle_);
    ork_handle_destroy(handle_, nullptr);
    ork_storage_destroy(storage_);
    spy::forget_names();
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  operator ork_handle*() const { return handle_; }
  ork_handle* operator->() const { return handle_; }
  const Mode& mode() const { return mode_; }
  bool tracking() const { return mode_.tracking == ORK_TRACKING_ON; }
  ork_storage* storage() const { return storage_; }
  uint32_t last_error() const { return ork_handle_last_error(handle_); }
  void expect_leaks() { leaks_expected_ = true; }

  // What was allocated since the handle was made.
  ork_memory_report memory() const {
    ork_memory_report now;
    ork_handle_memory(handle_, &now);
    now.live_blocks -= at_first_.live_blocks;
    now.live_bytes -= at_first_.live_bytes;
    return now;
  }

  // The peer knows each type at the given variants at most, and all others as they are; -1 for a
  // type that it does not know.
  [[nodiscard]] spy::Replacement domain(std::vector<std::pair<std::string, int8_t>> answers) const {
    return spy::replace(ork_domain_lookup_variant,
                        [answers = std::move(answers)](ork_handle* h, const ork_domain* d,
                                                       const ork_type_info* t, uint32_t* e) {
                          for (const auto& [name, variant] : answers) {
                            if (t && name == t->name) {
                              return variant;
                            }
                          }
                          return spy::next(ork_domain_lookup_variant)(h, d, t, e);
                        });
  }

  uint32_t err = 0;

 private:
  Mode mode_;
  ork_storage* storage_ = nullptr;
  ork_handle* handle_ = nullptr;
  ork_memory_report at_first_{};
  bool leaks_expected_ = false;
};

// ---- Exported functions -----------------------------------------------------

// The function with that suffix, through the prototype F; records pass as void pointers.
template <class F>
F* function(const wayfind_function* table, const std::string& suffix) {
  for (; table->suffix; ++table) {
    if (suffix == table->suffix) {
      return reinterpret_cast<F*>(table->address);
    }
  }
  throw std::runtime_error("no function " + suffix);
}

inline bool has_function(const wayfind_function* table, const std::string& suffix) {
  for (; table->suffix; ++table) {
    if (suffix == table->suffix) {
      return true;
    }
  }
  return false;
}

namespace detail {
template <size_t... I>
uint64_t call_with(void (*function)(void), const std::vector<uint64_t>& words,
                   std::index_sequence<I...>) {
  return reinterpret_cast<uint64_t (*)(decltype(static_cast<uint64_t>(I))...)>(function)(
      words[I]...);
}
template <size_t N>
uint64_t call_upto(void (*function)(void), const std::vector<uint64_t>& words) {
  if constexpr (N > 48) {
    throw std::runtime_error("too many arguments");
  } else {
    return words.size() == N ? call_with(function, words, std::make_index_sequence<N>())
                             : call_upto<N + 1>(function, words);
  }
}
}  // namespace detail

// Calls a function whose parameters after the fixed ones vary by record: every parameter of these
// families is a word or a pointer, and each takes one register or one slot of the stack.
inline uint64_t call_words(void (*function)(void), const std::vector<uint64_t>& words) {
  return detail::call_upto<1>(function, words);
}

inline uint64_t word(const void* address) { return reinterpret_cast<uint64_t>(address); }

// ---- Bytes of an object -----------------------------------------------------

inline uint8_t* bytes(void* obj) { return static_cast<uint8_t*>(obj); }

inline ork_object& header(void* obj) { return *static_cast<ork_object*>(obj); }

template <class T>
T load(const void* address) {
  T value;
  std::memcpy(&value, address, sizeof value);
  return value;
}

template <class T>
void store(void* address, T value) {
  std::memcpy(address, &value, sizeof value);
}

// A copy of bytes to compare with later.
class Snapshot {
 public:
  Snapshot(const void* address, size_t size)
      : address_(static_cast<const uint8_t*>(address)), bytes_(address_, address_ + size) {}

  // Where the first byte differs now, or -1.
  ptrdiff_t first_change() const {
    for (size_t i = 0; i < bytes_.size(); ++i) {
      if (address_[i] != bytes_[i]) {
        return static_cast<ptrdiff_t>(i);
      }
    }
    return -1;
  }
  bool unchanged() const { return first_change() < 0; }
  const std::vector<uint8_t>& before() const { return bytes_; }
  const uint8_t* address() const { return address_; }
  bool covers(const void* at) const { return at >= address_ && at < address_ + bytes_.size(); }
  void take_again() { bytes_.assign(address_, address_ + bytes_.size()); }

 private:
  const uint8_t* address_;
  std::vector<uint8_t> bytes_;
};

}  // namespace fixture
