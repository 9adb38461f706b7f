// What reading a frame may cost: no honest message is refused, and no frame costs more than told.
#include "tools/schema/frame_bound.h"

#include <iostream>
#include <map>
#include <set>

#include "behaviour/encoders/values.h"

namespace {

using encoders::Bytes;
using encoders::TypeList;

constexpr size_t frame_minimum = 43;

// The exported function of a message.
template <class Prototype>
Prototype* of(const wayfind_message& message, const char* suffix) {
  return kit::function<Prototype>(message.functions, suffix);
}

// ---- Reading ----------------------------------------------------------------

// What came of one frame.
struct Outcome {
  uint32_t err = 0;
  uint64_t peak = 0;  // held by the handle's storage
};

class Reader {
 public:
  Reader() {
    uint32_t err = 0;
    dispatcher_ = ork_dispatcher_create(&err);
    for (unsigned i = 0; i < wayfind_message_count; ++i) {
      const wayfind_message& message = wayfind_messages[i];
      destroys_[message.luid] = of<void(ork_handle*, uint32_t, void*)>(message, "_destroy");
      const ork_dispatch_entry entry{
          {message.luid, message.name,
           of<std::remove_pointer_t<ork_message_unmarshal_fn>>(message, "_unmarshal"), destroy,
           nullptr},
          destroys_[message.luid]};
      ork_dispatcher_add(dispatcher_, &entry, &err);
    }
    EXPECT_EQ(err, 0u);
  }
  ~Reader() { ork_dispatcher_free(dispatcher_); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  Outcome read(const Bytes& frame, ork_tracking tracking, const ork_type_list* release,
               wayfind::FrameBound bound) const {
    ork_options options;
    ork_options_init(&options);
    options.tracking = tracking;
    options.release = release;
    options.workspace_size = 0;
    options.memory_budget = size_t{256} << 20;  // far over every bound, far under what a count asks
    options.frame_base = bound.base;
    options.frame_factor = bound.factor;
    Outcome outcome;
    ork_handle* handle = ork_handle_create(&options, &outcome.err);
    EXPECT_EQ(outcome.err, 0u);
    Bytes readable = frame;
    readable.push_back(0);
    ork_dispatch(dispatcher_, handle, encoders::instance, const_cast<Reader*>(this),
                 readable.data(), static_cast<uint32_t>(frame.size()), &outcome.err);
    ork_memory_report report;
    ork_handle_destroy(handle, &report);
    EXPECT_EQ(report.live_blocks, 0u);
    outcome.peak = report.peak_held_bytes;
    return outcome;
  }

 private:
  // The handler of all messages.
  static void destroy(ork_handle* handle, uint32_t instance, void* ctx, void* message, uint32_t*) {
    const auto* luid = orklib_in_dispatch_message_info(handle, nullptr)->luid;
    static_cast<const Reader*>(ctx)->destroys_.at(luid)(handle, instance, message);
  }

  ork_dispatcher* dispatcher_ = nullptr;
  std::map<const uint8_t*, ork_message_destroy_fn> destroys_;
};

size_t limit(wayfind::FrameBound bound, const Bytes& frame) {
  return bound.base + bound.factor * frame.size();
}

// ---- Writing ----------------------------------------------------------------

struct Writer {
  ork_tracking tracking = ORK_TRACKING_OFF;
  const ork_type_list* release = nullptr;
  const ork_type_list* peer = nullptr;
  uint32_t elements = 1;
  bool fresh_elements = false;  // arrays of records alone, whose elements are as they were made
};

// Gives every array of records that many elements at once, or as many as its counter can tell.
void grow(const kit::Handle& handle, const wayfind_record& record, void* object,
          uint32_t elements) {
  uint32_t err = 0;
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.cls == WAYFIND_OBJECT && field.record != nullptr) {
      grow(handle, *field.record,
           kit::function<void*(ork_handle*, uint32_t, void*, uint32_t*)>(field.functions, "_get")(
               handle, encoders::instance, object, &err),
           elements);
    } else if (field.cls == WAYFIND_RECORD_ARRAY) {
      const uint32_t most = record.fields[i - 1].width == 1 ? 255 : elements;
      const encoders::Object element(handle, encoders::calls_of(field.record->name));
      kit::function<void(ork_handle*, uint32_t, void*, uint32_t, void*, uint32_t*)>(
          field.functions, "_set")(handle, encoders::instance, object, std::min(elements, most) - 1,
                                   element.get(), &err);
    }
  }
  EXPECT_EQ(err, 0u) << record.name;
}

// The frame of a filled message.
Bytes written(const wayfind_message& message, const Writer& how) {
  const kit::Handle handle([&](ork_options& options) {
    options.tracking = how.tracking;
    options.release = how.release;
  });
  void* object = of<void*(ork_handle*, uint32_t)>(message, "_create")(handle, encoders::instance);
  for (unsigned i = 0; i < message.record_count; ++i) {
    uint32_t err = 0;
    void* record = of<void*(ork_handle*, uint32_t, void*, uint32_t*)>(
        message, (std::string("_") + message.records[i]->name + "_get").c_str())(
        handle, encoders::instance, object, &err);
    if (how.fresh_elements) {
      grow(handle, *message.records[i], record, how.elements);
    } else {
      encoders::Filler filler(handle, how.elements);
      filler.fill(*message.records[i], record, message.records[i]->name);
      err |= filler.err;
    }
    EXPECT_EQ(err, 0u);
  }
  if (how.peer != nullptr) {
    handle.set_peer(how.peer);
  }
  Bytes frame(of<uint32_t(ork_handle*, uint32_t, const void*)>(message, "_len")(
                  handle, encoders::instance, object) +
              1);
  uint32_t err = 0;
  frame.resize(of<uint32_t(ork_handle*, uint32_t, uint8_t*, void*, int32_t, uint32_t*)>(
      message, "_marshal")(handle, encoders::instance, frame.data(), object,
                           static_cast<int32_t>(frame.size()) - 1, &err));
  EXPECT_EQ(err, 0u);
  of<void(ork_handle*, uint32_t, void*)>(message, "_destroy")(handle, encoders::instance, object);
  return frame;
}

// ---- Arrays -----------------------------------------------------------------

void add_element_records(const wayfind_record& record, std::set<const wayfind_record*>& found) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.record == nullptr) {
      continue;
    }
    if (field.cls == WAYFIND_RECORD_ARRAY) {
      found.insert(field.record);
    }
    add_element_records(*field.record, found);
  }
}

// The records that are elements of arrays somewhere in a message.
std::set<const wayfind_record*> element_records(const wayfind_message& message) {
  std::set<const wayfind_record*> found;
  for (unsigned i = 0; i < message.record_count; ++i) {
    add_element_records(*message.records[i], found);
  }
  return found;
}

bool has_arrays(const wayfind_record& record) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.cls == WAYFIND_VALUE_ARRAY || field.cls == WAYFIND_RECORD_ARRAY ||
        (field.record != nullptr && has_arrays(*field.record))) {
      return true;
    }
  }
  return false;
}

constexpr ork_tracking both[] = {ORK_TRACKING_OFF, ORK_TRACKING_ON};

class FrameBound : public testing::TestWithParam<const wayfind_message*> {
 protected:
  const wayfind_message& message = *GetParam();
  const Reader reader;

  void expect_accepted(const Bytes& frame, const ork_type_list* release, const std::string& what) {
    for (const ork_tracking tracking : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
      const wayfind::FrameBound bound = wayfind::frame_bound(tracking);
      const Outcome outcome = reader.read(frame, tracking, release, bound);
      EXPECT_EQ(outcome.err, 0u) << what << ", reader tracks " << tracking;
      EXPECT_LE(outcome.peak, limit(bound, frame)) << what << ", reader tracks " << tracking;
    }
  }
};

TEST_P(FrameBound, every_release_is_read_by_every_release) {
  for (unsigned theirs = 0; theirs < 4; ++theirs) {
    const TypeList written_by = encoders::release_list(theirs);
    for (const ork_tracking writer : both) {
      for (const uint32_t elements : {0, 1, 3}) {
        const Bytes frame = written(
            message, {.tracking = writer, .release = written_by.get(), .elements = elements});
        for (unsigned ours = 0; ours < 4; ++ours) {
          const TypeList release = encoders::release_list(ours);
          expect_accepted(frame, release.get(),
                          "release " + std::to_string(theirs) + " to " + std::to_string(ours));
        }
      }
    }
  }
}

TEST_P(FrameBound, long_arrays_are_read) {
  for (const ork_tracking writer : both) {
    for (const uint32_t elements : {30, 200}) {
      if (elements == 200 && element_records(message).size() > 1) {
        continue;  // two levels of them: 30 are 900
      }
      expect_accepted(written(message, {.tracking = writer, .elements = elements}), nullptr,
                      std::to_string(elements) + " elements");
    }
  }
}

// The peer does not know the elements' type, so each is an image of six bytes.
TEST_P(FrameBound, elements_of_negative_variant_are_read) {
  for (const wayfind_record* element : element_records(message)) {
    const TypeList peer = encoders::release_list(9, element->name, -1);
    for (const ork_tracking writer : both) {
      const auto expect = [&](uint32_t elements, bool fresh) {
        const Bytes frame = written(message, {.tracking = writer,
                                              .peer = peer.get(),
                                              .elements = elements,
                                              .fresh_elements = fresh});
        expect_accepted(frame, nullptr, std::to_string(elements) + " without " + element->name);
      };
      expect(1, false);
      expect(30, false);
      expect(20'000, true);
    }
  }
}

// Counts and everything else overwritten with numbers that ask for much.
TEST_P(FrameBound, no_frame_costs_more) {
  for (const ork_tracking tracking : both) {
    const wayfind::FrameBound bound = wayfind::frame_bound(tracking);
    for (const ork_tracking writer : both) {
      const Bytes honest = written(message, {.tracking = writer, .elements = 2});
      for (size_t place = frame_minimum; place + 4 <= honest.size(); ++place) {
        for (const uint32_t number : {0x000000FFu, 0x00001000u, 0x00100000u, 0x7FFFFFFFu}) {
          Bytes frame = honest;
          for (size_t i = 0; i < 4; ++i) {
            frame[place + i] = static_cast<uint8_t>(number >> (24 - 8 * i));
          }
          const Outcome outcome = reader.read(frame, tracking, nullptr, bound);
          ASSERT_LE(outcome.peak, limit(bound, frame)) << "place " << place;
        }
      }
    }
  }
}

std::vector<const wayfind_message*> all_messages() {
  std::vector<const wayfind_message*> all;
  for (unsigned i = 0; i < wayfind_message_count; ++i) {
    all.push_back(&wayfind_messages[i]);
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(All, FrameBound, testing::ValuesIn(all_messages()),
                         [](const auto& one) { return std::string(one.param->name); });

// True if some place of an honest frame, overwritten with a count, makes it cost more than told.
bool can_cost_more(const Reader& reader, const wayfind_message& message) {
  const Bytes honest = written(message, {.elements = 1});
  for (size_t place = frame_minimum; place + 4 <= honest.size(); ++place) {
    Bytes frame = honest;
    const uint8_t count[] = {0, 0, 0x40, 0};
    std::copy_n(count, 4, frame.begin() + static_cast<std::ptrdiff_t>(place));
    const Outcome outcome = reader.read(frame, ORK_TRACKING_OFF, nullptr, {0, 0});
    if (outcome.peak > limit(wayfind::frame_bound(ORK_TRACKING_OFF), frame)) {
      return true;
    }
  }
  return false;
}

// The frames that the law is about do cost more while nothing bounds them.
TEST(FrameBoundOff, a_count_of_elements_that_are_not_there_costs_more) {
  const Reader reader;
  size_t costly = 0;
  for (const wayfind_message* message : all_messages()) {
    costly += can_cost_more(reader, *message) ? 1 : 0;
  }
  EXPECT_GT(costly, 2u);
}

TEST(FrameBoundSchema, two_levels_of_arrays_are_among_the_messages) {
  std::set<std::string> records;
  for (const wayfind_message* message : all_messages()) {
    for (const wayfind_record* element : element_records(*message)) {
      if (has_arrays(*element)) {
        records.insert(element->name);
      }
    }
  }
  EXPECT_EQ(records.size(), 2u) << testing::PrintToString(records);
}

TEST(FrameBoundSchema, tells_its_numbers) {
  for (const ork_tracking tracking : both) {
    const wayfind::FrameBound bound = wayfind::frame_bound(tracking);
    EXPECT_GT(bound.base, 0u);
    EXPECT_GT(bound.factor, 0u);
    std::cout << "tracking " << (tracking == ORK_TRACKING_ON ? "on" : "off") << ": base "
              << bound.base << ", factor " << bound.factor << "\n";
  }
}

}  // namespace
