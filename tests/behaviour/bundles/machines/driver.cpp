// Goes through all sequences of the given events up to a length, each from a fresh start, and
// prints what the last event of each did.
//
//   driver send|receive LENGTH EVENT...
#include <cstdio>
#include <cstdlib>

#include "behaviour/bundles/family.h"

namespace {

using messages::Bundle;
using messages::Control;
using kit::Handle;
using messages::Message;

constexpr uint32_t pending_error = 5;

const Bundle bundle = messages::bundle("fwe_cl_wayfind_show_sitetohop_response");
const Message member = messages::message("fwe_cl_wayfind_sitetohop_msg");
const Message stranger = messages::message("fwe_cl_wayfind_debug_msg");

struct Event {
  bool is_short;
  bool pending;
  std::string what;
};

Event parse(const std::string& text) {
  const size_t colon = text.find(':');
  const std::string how = colon == std::string::npos ? "" : text.substr(0, colon);
  return {how == "short", how == "pending",
          colon == std::string::npos ? text : text.substr(colon + 1)};
}

Control control_of(const std::string& what) {
  return what == "start" ? bundle.start() : what == "abort" ? bundle.abort() : bundle.commit();
}

// ---- Sending ----------------------------------------------------------------

class Sender {
 public:
  Sender() : handle_(Handle().release()), member_(member, handle_), stranger_(stranger, handle_) {
    member_size_ = member_.frame().size();
    stranger_size_ = stranger_.frame().size();
  }

  void reset() {
    uint32_t err = 0;
    bundle_send_message_list_destroy(handle_, 0, &err);
  }
  void run(const Event& event) {
    const bool control = event.what == "start" || event.what == "abort" || event.what == "commit";
    err_ = event.pending ? pending_error : 0;
    if (control) {
      written_ =
          control_of(event.what).marshal(handle_, 0, buffer_, event.is_short ? 30 : 43, &err_);
      whole_ = 0;
      return;
    }
    const bool foreign = event.what == "refused";
    whole_ = foreign ? stranger_size_ : member_size_;
    const auto room = static_cast<int32_t>(event.what == "failing" ? whole_ - 1 : whole_);
    written_ =
        (foreign ? stranger : member)
            .marshal(handle_, 0, buffer_, foreign ? stranger_.get() : member_.get(), room, &err_);
  }
  void print() const {
    const char* const state = handle_->bundle_ctx != 0 ? "open" : "idle";
    if (whole_ != 0 && written_ != 0) {
      std::printf("%s %u %s\n", written_ == whole_ ? "all" : "some", err_, state);
    } else {
      std::printf("%u %u %s\n", written_, err_, state);
    }
  }

 private:
  ork_handle* handle_;
  messages::Made member_;
  messages::Made stranger_;
  size_t member_size_;
  size_t stranger_size_;
  uint8_t buffer_[4096];
  uint32_t err_ = 0;
  uint32_t written_ = 0;
  size_t whole_ = 0;
};

// ---- Receiving --------------------------------------------------------------

class Receiver {
 public:
  Receiver() : handle_(Handle().release()), dispatcher_(new_dispatcher()) {
    ork_handle* sender = Handle().release();
    uint32_t err = 0;
    for (const auto& [what, frame] : {std::pair("start", &start_), std::pair("abort", &abort_),
                                      std::pair("commit", &commit_)}) {
      frame->resize(43);
      sender->bundle_ctx = std::string_view(what) == "start" ? 0 : 1;
      control_of(what).marshal(sender, 0, frame->data(), 43, &err);
    }
    sender->bundle_ctx = 0;
    member_ = messages::Made(member, sender).frame();
    failing_ = member_;
    failing_.pop_back();
    failing_[15] = static_cast<uint8_t>(
        failing_[15] - 1);  // the header's length: the frame is whole, its record is not
  }

  void reset() {
    uint32_t err = 0;
    bundle_receive_message_list_destroy(handle_, 0, &err);
  }
  void run(const Event& event) {
    seen_ = -1;
    err_ = event.pending ? pending_error : 0;
    if (event.what == "unmarshal") {
      for (const Control& control : {bundle.start(), bundle.abort(), bundle.commit()}) {
        control.unmarshal(handle_, 0, this, nullptr, nullptr, 0, nullptr, &err_);
      }
    } else if (event.pending) {
      control_of(event.what).handle_message(handle_, 0, this, nullptr, &err_);
    } else {
      const std::vector<uint8_t>& frame = frame_of(event.what);
      ork_dispatch(dispatcher_, handle_, 0, this, frame.data(), static_cast<uint32_t>(frame.size()),
                   &err_);
    }
  }
  void print() const {
    const std::string seen = seen_ < 0 ? "-" : std::to_string(seen_);
    std::printf("%u %s %d %s\n", err_, seen.c_str(), members(handle_),
                handle_->bundle_rx_active != 0 ? "accumulating" : "idle");
  }

 private:
  static int members(ork_handle* handle) {
    int count = 0;
    for (const ork_bundle_member* each = ork_bundle_next(handle, nullptr); each != nullptr;
         each = ork_bundle_next(handle, each)) {
      ++count;
    }
    return count;
  }
  static void on_commit(ork_handle* handle, uint32_t, void* ctx, uint32_t*) {
    static_cast<Receiver*>(ctx)->seen_ = members(handle);
  }
  static void on_member(ork_handle* handle, uint32_t instance, void*, void* msg, uint32_t*) {
    member.destroy(handle, instance, msg);
  }
  static ork_dispatcher* new_dispatcher() {
    uint32_t err = 0;
    ork_dispatcher* dispatcher = ork_dispatcher_create(&err);
    for (const char* what : {"start", "abort", "commit"}) {
      const Control control = control_of(what);
      const ork_dispatch_entry entry{
          {control.luid(), bundle.name(), control.unmarshal_function(), nullptr, on_commit},
          nullptr};
      ork_dispatcher_add(dispatcher, &entry, &err);
    }
    const ork_dispatch_entry entry{
        {member.schema().luid, member.name(), member.unmarshal_function(), on_member, nullptr},
        member.destroy_function()};
    ork_dispatcher_add(dispatcher, &entry, &err);
    return dispatcher;
  }
  const std::vector<uint8_t>& frame_of(const std::string& what) const {
    return what == "start"    ? start_
           : what == "abort"  ? abort_
           : what == "commit" ? commit_
           : what == "member" ? member_
                              : failing_;
  }

  ork_handle* handle_;
  ork_dispatcher* dispatcher_;
  std::vector<uint8_t> start_, abort_, commit_, member_, failing_;
  uint32_t err_ = 0;
  int seen_ = -1;
};

// ---- All sequences ----------------------------------------------------------

template <class Side>
void walk(Side& side, const std::vector<Event>& events, std::vector<const Event*>& path,
          size_t length) {
  for (const Event& event : events) {
    path.push_back(&event);
    side.reset();
    for (const Event* each : path) {
      side.run(*each);
    }
    side.print();
    if (path.size() < length) {
      walk(side, events, path, length);
    }
    path.pop_back();
  }
}

template <class Side>
void walk_all(const std::vector<Event>& events, size_t length) {
  Side side;
  std::vector<const Event*> path;
  walk(side, events, path, length);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: driver send|receive LENGTH EVENT...\n");
    return 2;
  }
  std::vector<Event> events;
  for (int i = 3; i < argc; ++i) {
    events.push_back(parse(argv[i]));
  }
  const size_t length = std::strtoul(argv[2], nullptr, 10);
  std::string_view(argv[1]) == "send" ? walk_all<Sender>(events, length)
                                      : walk_all<Receiver>(events, length);
  std::fflush(stdout);
  std::_Exit(0);
}
