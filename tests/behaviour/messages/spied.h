// What a call on a message left behind, so that the library's way and the way by hand can be
// compared.
#pragma once

#include "behaviour/bundles/family.h"
#include "behaviour/messages/by_hand.h"

namespace messages {

using messages::Message;

constexpr uint32_t instance = 7;

// Everything that one run leaves behind.
struct Outcome {
  std::vector<std::string> calls;
  uint64_t result = 0;
  uint32_t err = 0;
  uint32_t last_error = 0;
  std::vector<uint8_t> buffer;  // as long as the run's memory, guard bytes included
  ork_message_header header{};
  std::vector<bool> records;  // which record slots are filled
  uint32_t bundle_ctx = 0;
  uint64_t live_blocks = 0;
  uint64_t created = 0;  // since the run began
  uint64_t destroyed = 0;
};

inline void expect_same(const Outcome& library, const Outcome& hand, const std::string& what) {
  EXPECT_TRUE(spy::same_calls(library.calls, hand.calls)) << what;
  EXPECT_EQ(library.result, hand.result) << what;
  EXPECT_EQ(library.err, hand.err) << what;
  EXPECT_EQ(library.last_error, hand.last_error) << what;
  EXPECT_EQ(library.buffer, hand.buffer) << what;
  EXPECT_EQ(std::memcmp(&library.header, &hand.header, sizeof hand.header), 0) << what;
  EXPECT_EQ(library.records, hand.records) << what;
  EXPECT_EQ(library.bundle_ctx, hand.bundle_ctx) << what;
  EXPECT_EQ(library.live_blocks, hand.live_blocks) << what;
  EXPECT_EQ(library.created, hand.created) << what;
  EXPECT_EQ(library.destroyed, hand.destroyed) << what;
}

// A handle under observation with the names that its calls are printed by.
class Stage {
 public:
  Stage(const Message& message, ork_tracking tracking)
      : message_(message), handle_(tracking), before_(entry()) {
    spy::forget_names();
    spy::observe(handle_.get());
    spy::name_at(&err, "err");
    spy::name_at(&handle_->cr_error, "cr_error");
    spy::name_at(&entry().create_count, "create_count");
    spy::name_at(&entry().destroy_count, "destroy_count");
    spy::name_at(message.schema().luid, "luid");
  }
  ~Stage() { spy::forget(handle_.get()); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  ork_handle* handle() const { return handle_.get(); }

  // For runs that leave a message with nobody: the handle takes back what is lost and says
  // nothing of it.
  void lose() { handle_.expect_leaks(); }

  // Names a message and its records.
  void name(void* msg) const {
    spy::name(msg, message_.schema().type->varinfo->entries[0].used_length, "msg");
    for (size_t i = 0; i < message_.record_count(); ++i) {
      if (void* record = message_.slots(msg)[i]; record != nullptr) {
        const wayfind_record& type = message_.record(i);
        spy::name(record, type.layouts[type.variants - 1].body, "record" + std::to_string(i));
      }
    }
  }
  // A buffer whose first length bytes are the caller's; those behind are guards.
  std::vector<uint8_t>& give_buffer(size_t length) {
    memory_.assign(length + 64, 0xA5);
    spy::name(memory_.data(), memory_.size(), "buffer");
    return memory_;
  }

  // Fills in what can be read off after the run; msg may be null.
  Outcome outcome(const spy::Log& log, uint64_t result, void* msg) {
    Outcome found;
    found.calls = log.calls();
    found.result = result;
    found.err = err;
    found.last_error = ork_handle_last_error(handle());
    found.buffer = memory_;
    if (msg != nullptr) {
      found.header = message_.header(msg);
      for (const void* record : message_.slots(msg)) {
        found.records.push_back(record != nullptr);
      }
    }
    found.bundle_ctx = handle_->bundle_ctx;
    found.live_blocks = messages::live_blocks(handle_);
    found.created = entry().create_count - before_.create_count;
    found.destroyed = entry().destroy_count - before_.destroy_count;
    return found;
  }

  uint32_t err = 0;

 private:
  const ork_variant_entry& entry() const { return message_.schema().type->varinfo->entries[0]; }

  Message message_;
  Handle handle_;
  ork_variant_entry before_;
  std::vector<uint8_t> memory_;
};

// As long as it lives, objects of the message get a descriptor of their own, as in shared storage
// that no hook watches.
class OwnDescriptor {
 public:
  OwnDescriptor(const Message& message, ork_handle* handle, uint32_t shared = 1)
      : type(*message.schema().type),
        variants(*type.varinfo),
        entry(variants.entries[0]),
        handle_(handle),
        find_(spy::replace(ork_type_info_ptr_get,
                           [this, of = message.schema().type](
                               ork_handle*, uint32_t, const ork_type_info* each,
                               ork_type_info_init_fn) { return each == of ? &type : each; })) {
    variants.entries = &entry;
    type.varinfo = &variants;
    type.shared = shared;
    handle->shared_types = 2;
  }
  ~OwnDescriptor() { handle_->shared_types = 0; }
  OwnDescriptor(const OwnDescriptor&) = delete;
  OwnDescriptor& operator=(const OwnDescriptor&) = delete;

  ork_type_info type;
  ork_variant_info variants;
  ork_variant_entry entry;

 private:
  ork_handle* handle_;
  spy::Replacement find_;
};

// A bundle that takes the message.
inline messages::Bundle bundle_with(const Message& message) {
  for (const messages::Bundle& bundle : messages::bundles()) {
    for (const wayfind_member& member :
         std::span(bundle.schema().members, bundle.schema().member_count)) {
      if (member.message == &message.schema()) {
        return bundle;
      }
    }
  }
  throw std::runtime_error("no bundle takes " + std::string(message.name()));
}

// A bundle that does not.
inline messages::Bundle bundle_without(const Message& message) {
  for (const messages::Bundle& bundle : messages::bundles()) {
    bool taken = false;
    for (const wayfind_member& member :
         std::span(bundle.schema().members, bundle.schema().member_count)) {
      taken |= member.message == &message.schema();
    }
    if (!taken) {
      return bundle;
    }
  }
  throw std::runtime_error("all bundles take " + std::string(message.name()));
}

inline void open(const messages::Bundle& bundle, ork_handle* handle) {
  uint8_t buffer[messages::frame_size];
  uint32_t err = 0;
  bundle.start().marshal(handle, instance, buffer, sizeof buffer, &err);
  ASSERT_EQ(err, 0u);
}

// Ends a bundle that is open on a handle, so that nothing of it is left.
inline void close(ork_handle* handle) {
  uint32_t err = 0;
  bundle_send_message_list_destroy(handle, instance, &err);
}

const ork_tracking trackings[] = {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF, ORK_TRACKING_ON};

}  // namespace messages
