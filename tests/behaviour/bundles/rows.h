// A dispatcher with every row of the module, and what a bundle handler sees of the members.
#pragma once

#include "behaviour/bundles/family.h"

namespace messages {

inline std::vector<uint8_t> control_frame(ork_handle* handle, const Control& control) {
  std::vector<uint8_t> frame(43);
  uint32_t err = 0;
  EXPECT_EQ(control.marshal(handle, 0, frame.data(), 43, &err), 43u);
  EXPECT_EQ(err, 0u);
  return frame;
}

// Every row of the module.
class Rows {
 public:
  explicit Rows(ork_bundle_handler on_commit = nullptr, ork_message_handler on_message = nullptr) {
    uint32_t err = 0;
    dispatcher_ = ork_dispatcher_create(&err);
    for (const Message& message : all()) {
      const ork_dispatch_entry entry{{message.schema().luid, message.name(),
                                      message.unmarshal_function(), on_message, nullptr},
                                     message.destroy_function()};
      ork_dispatcher_add(dispatcher_, &entry, &err);
    }
    for (const Bundle& bundle : bundles()) {
      for (const Kind kind : {Kind::start, Kind::abort, Kind::commit}) {
        const Control control = bundle.control(kind);
        const ork_dispatch_entry entry{{control.luid(), bundle.name(), control.unmarshal_function(),
                                        nullptr, kind == Kind::commit ? on_commit : nullptr},
                                       nullptr};
        ork_dispatcher_add(dispatcher_, &entry, &err);
      }
    }
    EXPECT_EQ(err, 0u);
  }
  ~Rows() { ork_dispatcher_free(dispatcher_); }
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;

  uint32_t dispatch(const Handle& handle, void* ctx, const std::vector<uint8_t>& frame) const {
    uint32_t err = 0;
    ork_dispatch(dispatcher_, handle.get(), 0, ctx, frame.data(),
                 static_cast<uint32_t>(frame.size()), &err);
    return err;
  }

 private:
  ork_dispatcher* dispatcher_;
};

// What handlers of commits saw; a dispatch carries it as its context.
struct Seen {
  std::vector<std::string> members;
  int commits = 0;
};

inline void look(ork_handle* handle, uint32_t, void* ctx, uint32_t*) {
  auto* seen = static_cast<Seen*>(ctx);
  seen->commits += 1;
  for (ork_bundle_member* member = ork_bundle_next(handle, nullptr); member != nullptr;
       member = ork_bundle_next(handle, member)) {
    seen->members.push_back(ork_bundle_member_info(member)->name);
    EXPECT_NE(ork_bundle_member_message(member), nullptr);
  }
}

}  // namespace messages
