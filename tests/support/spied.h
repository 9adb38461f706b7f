// Handles and objects whose calls the spy writes down, under the names that spy.h's Log shows.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/bytes.h"
#include "support/kit.h"
#include "support/spy.h"
#include "support/told_tables.h"

namespace kit {

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

// Outlives the handle that lies in it.
class Storage {
 protected:
  explicit Storage(bool shared) {
    uint32_t problem = 0;
    storage_ = shared ? ork_storage_create(0, &problem) : nullptr;
  }
  ~Storage() { ork_storage_destroy(storage_); }
  Storage(const Storage&) = delete;
  Storage& operator=(const Storage&) = delete;

  ork_storage* storage_;
};

// A handle under observation, with an error slot of its own: "err" and "cr_error" in logs.
class SpiedHandle : private Storage, public Handle {
 public:
  explicit SpiedHandle(const Mode& mode = plain)
      : Storage(mode.shared),
        Handle([&](ork_options& options) {
          options.tracking = mode.tracking;
          options.storage = storage_;
          options.cr_instance = mode.cr_instance;
          options.db_recording = mode.recording;
        }),
        mode_(mode) {
    spy::observe(get());
    spy::name_at(&err, "err");
    spy::name_at(&get()->cr_error, "cr_error");
  }
  ~SpiedHandle() {
    if (!leaks_expected()) {
      EXPECT_EQ(memory().live_blocks, 0u) << "blocks of a test that still live: " << mode_.text();
    }
    spy::forget(get());
    destroy();
    spy::forget_names();
  }

  const Mode& mode() const { return mode_; }
  bool tracking() const { return mode_.tracking == ORK_TRACKING_ON; }
  ork_storage* storage() const { return storage_; }

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
};

// ---- Objects ----------------------------------------------------------------

// An object that logs call by its name, its state block by "state" behind it; an object called
// "obj" has its state block called "state".
class SpiedObject : public Object {
 public:
  SpiedObject(SpiedHandle& handle, const wayfind_record& schema, const std::string& name = "obj")
      : Object(handle, schema), handle_(handle), told_(*told::record(schema.name)) {
    spy::name(get(), told_.newest().body, name);
    if (handle.tracking()) {
      spy::name(state(), told_.newest().state, name == "obj" ? "state" : name + "_state");
    }
  }
  SpiedObject(SpiedHandle& handle, const std::string& schema, const std::string& name = "obj")
      : SpiedObject(handle, record(schema), name) {}

  uint8_t* state() const { return bytes(get()) + told_.newest().body; }
  uint8_t* field(const std::string& name) const { return bytes(get()) + told_.field(name).offset; }
  uint8_t& state_of(const std::string& name) const { return state()[told_.field(name).state]; }
  std::vector<uint8_t> state_bytes() const { return {state(), state() + told_.newest().state}; }
  uint64_t word() const { return kit::word(get()); }

  // Everything, state bytes included.
  Snapshot snapshot() const {
    return Snapshot(get(), told_.newest().body + (handle_.tracking() ? told_.newest().state : 0));
  }

 private:
  SpiedHandle& handle_;
  const told::Record& told_;
};

}  // namespace kit
