// Memory that is watched while a function runs, so that no byte of it changes before it was
// announced.
#pragma once

#include <algorithm>
#include <set>

#include "laws/frame/fields.h"

namespace frame {

// Memory that is somebody's, watched while a function runs.
class Watch {
 public:
  explicit Watch(spy::Log& log) {
    log.on_announcement = [this](const spy::Announcement& a) {
      check();
      announced_.push_back(a);
    };
    log.on_free = [this](const void* block) {
      check();
      std::erase_if(regions_, [&](const Snapshot& region) { return region.address() == block; });
    };
  }

  void region(const void* address, size_t size) {
    if (address) {
      regions_.emplace_back(address, size);
    }
  }

  // Bytes that may change without a word here.
  void allow(const void* address, size_t size) {
    announced_.push_back({static_cast<const uint8_t*>(address), size, nullptr});
  }

  void check() {
    for (const Snapshot& region : regions_) {
      for (size_t i = 0; i < region.before().size(); ++i) {
        const uint8_t* const at = region.address() + i;
        if (*at != region.before()[i]) {
          changed_ = true;
          if (!covered(at)) {
            unannounced_.insert(spy::symbol(at));
          }
        }
      }
    }
  }

  const std::set<std::string>& unannounced() const { return unannounced_; }
  bool changed() const { return changed_; }

 private:
  bool covered(const uint8_t* at) const {
    return std::any_of(announced_.begin(), announced_.end(), [&](const spy::Announcement& a) {
      return at >= a.address && at < a.address + a.length;
    });
  }

  std::vector<Snapshot> regions_;
  std::vector<spy::Announcement> announced_;
  std::set<std::string> unannounced_;
  bool changed_ = false;
};

// An array's two blocks; elements are those of the entry's pointer.
inline void watch_arrays(Watch& watch, const SpiedHandle& h, const told::Record& record,
                         uint8_t* obj, uint8_t* state) {
  uint32_t count = 0;
  for (const told::Field& field : record.fields) {
    if (field.cls == Class::counter) {
      count = field.width == 1 ? obj[field.offset] : load<uint32_t>(obj + field.offset);
    } else if (field.cls == Class::value_array || field.cls == Class::record_array) {
      const told::Record* const element = told::record(field.type);
      const size_t each = field.width + (h.tracking() && element ? element->newest().state : 0u);
      auto* const block = load<uint8_t*>(obj + field.offset);
      watch.region(block, block ? count * each : 0);
      if (block) {
        spy::name(block, count * each, "array");
      }
      if (h.tracking()) {
        auto* const elements = load<uint8_t*>(state + field.state + 8);
        watch.region(elements, count);
        if (elements) {
          spy::name(elements, count, "elements");
        }
      }
    } else if (field.cls == Class::object && told::is_record(field)) {
      watch_arrays(watch, h, *told::record(field.type), obj + field.offset, state + field.nested);
    }
  }
}

inline void watch_object(Watch& watch, SpiedHandle& h, const Type& type, void* obj) {
  watch.region(obj, type.size(h));
  watch_arrays(watch, h, type.told, bytes(obj), bytes(obj) + type.told.newest().body);
}

inline std::string list(const std::set<std::string>& places) {
  std::string text;
  for (const std::string& place : places) {
    text += " " + place;
  }
  return text;
}

// An array's entry gives up its block of element bytes without a word when its record goes: the
// pointers of a record's entries.
inline void allow_element_pointers(Watch& watch, const told::Record& record, uint8_t* state) {
  for (const told::Field& field : record.fields) {
    if (field.cls == Class::value_array || field.cls == Class::record_array) {
      watch.allow(state + field.state + 8, 8);
    } else if (field.nested >= 0) {
      allow_element_pointers(watch, *told::record(field.type), state + field.nested);
    }
  }
}

// Two elements in every array that the record has, its embedded records' too.
inline void fill_arrays(SpiedHandle& h, const Type& type, uint64_t obj) {
  for (const told::Field& told : type.told.fields) {
    const Field f = field(type, told.name);
    if (f.is_array()) {
      Source src(h, f, "element");
      f.call("_set", {word(h), instance, obj, 1, src.word(), word(&h.err)});
    } else if (f.told.cls == Class::object && f.is_record()) {
      fill_arrays(h, frame::type(f.told.type), obj + f.told.offset);
    }
  }
}

}  // namespace frame
