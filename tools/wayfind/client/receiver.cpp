#include "tools/wayfind/client/receiver.h"

#include <algorithm>
#include <cerrno>

#include "ork/orklib.h"
#include "tools/common/failure.h"

namespace wayfind {
namespace {

enum Control { start, abort_, commit, control_kinds };
constexpr const char* control_names[control_kinds] = {"start", "abort", "commit"};

std::string luid_at(const uint8_t* bytes) {
  return {reinterpret_cast<const char*>(bytes), ORK_LUID_SIZE};
}

std::string hexadecimal(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    constexpr const char* digits = "0123456789abcdef";
    text += digits[static_cast<uint8_t>(byte) >> 4];
    text += digits[byte & 15];
  }
  return text;
}

// What the dispatcher's error numbers say of a frame whose LUID is known.
std::string reason_of(uint32_t err) {
  switch (err) {
    case EEXIST: return "begins a bundle inside a bundle";
    case EBADMSG: return "ends a bundle that was not begun";
    case ENOSYS: return "stands outside a bundle";
    case EMSGSIZE: return "is too short for what it holds";
    default: return "cannot be read: " + words_for(err);
  }
}

}  // namespace

Receiver::Receiver(ork_handle* handle, const Subject& subject, ShowOutput& output,
                   Recorder& recorder)
    : handle_(handle), subject_(subject), output_(output), recorder_(recorder) {
  uint32_t err = 0;
  dispatcher_.reset(ork_dispatcher_create(&err));
  expect_done(err, "no dispatcher");
  for (unsigned i = 0; i < wayfind_message_count; ++i)
    add_message(message_type(wayfind_messages[i]));
  for (unsigned i = 0; i < wayfind_bundle_count; ++i) add_bundle(wayfind_bundles[i]);
}

void Receiver::add_message(const MessageType& type) {
  add({{type.schema->luid, type.schema->name, type.unmarshal, nullptr, nullptr}, type.destroy},
      {type.schema->name, &type});
}

void Receiver::add_bundle(const wayfind_bundle& bundle) {
  for (int kind = 0; kind < control_kinds; ++kind) {
    const std::string function =
        std::string("_bundle_") + control_names[kind] + "_message_unmarshal";
    ork_message_unmarshal_fn unmarshal = nullptr;
    find_function(bundle.functions, function, unmarshal);
    add({{bundle.luids[kind], bundle.name, unmarshal, nullptr, on_commit}, nullptr},
        {std::string(control_names[kind]) + " of " + bundle.name, nullptr});
  }
}

void Receiver::add(const ork_dispatch_entry& entry, const Known& known) {
  uint32_t err = 0;
  ork_dispatcher_add(dispatcher_.get(), &entry, &err);
  expect_done(err, known.name);
  known_.emplace(luid_at(entry.info.luid), known);
}

void Receiver::take(std::span<const uint8_t> frame) {
  ++frames_;
  const std::string luid = luid_at(frame.data() + ORK_MESSAGE_HEADER_WIRE_SIZE);
  const auto found = known_.find(luid);
  if (found == known_.end()) {
    throw Failure("frame " + std::to_string(frames_) + " has LUID " + hexadecimal(luid) +
                  ", which this release does not know; ask with the release of the agent");
  }
  const Known& known = found->second;
  recorder_.before_message();
  uint32_t err = 0;
  ork_dispatch(dispatcher_.get(), handle_, ORK_NO_INSTANCE, this, frame.data(),
               static_cast<uint32_t>(frame.size()), &err);
  if (failure_) std::rethrow_exception(failure_);
  if (err == ENOMEM) throw Failure(described(frame) + " asks for more memory than a show may have");
  if (err != 0) throw Failure(described(frame) + " " + reason_of(err));
  if (known.type != nullptr) recorder_.after_message(known.name);
  if (luid == luid_at(subject_.bundle->luids[abort_])) {
    throw Failure("the agent gave up show " + subject_.name +
                  " in the middle; see what it reported");
  }
}

std::string Receiver::described(std::span<const uint8_t> frame) const {
  return "frame " + std::to_string(frames_) + ", " +
         known_.at(luid_at(frame.data() + ORK_MESSAGE_HEADER_WIRE_SIZE)).name + ",";
}

// Called by the library, which no exception may go through.
void Receiver::on_commit(ork_handle*, uint32_t, void* ctx, uint32_t* err) {
  auto& receiver = *static_cast<Receiver*>(ctx);
  try {
    receiver.give_bundle();
    receiver.committed_ = true;
  } catch (...) {
    receiver.failure_ = std::current_exception();
    *err = ECANCELED;
  }
}

void Receiver::give_bundle() {
  const std::string name = orklib_in_dispatch_message_info(handle_, nullptr)->name;
  if (name != subject_.bundle->name)
    throw Failure("the agent answers with " + name + " instead of " + subject_.bundle->name);
  check_members();
  std::vector<look::Message> shown;
  for (const ork_bundle_member* member = nullptr;
       (member = ork_bundle_next(handle_, member)) != nullptr;)
    shown.emplace_back(handle_, *type_of(*member).schema, ork_bundle_member_message(member));
  output_.put(name, shown);
}

// The library keeps what comes between start and commit; what the bundle's table allows is looked
// at here. What does not belong in it ends the show; what came too often is given on first.
void Receiver::check_members() {
  std::map<const MessageType*, size_t> seen;
  for (const ork_bundle_member* member = nullptr;
       (member = ork_bundle_next(handle_, member)) != nullptr;) {
    const MessageType& type = type_of(*member);
    if (row_of(type).repeatable == 0 && ++seen[&type] == 2)
      objection_ = "the agent's show " + subject_.name + " holds more than one " +
                   type.schema->name + "; see what it reported";
  }
}

const wayfind_member& Receiver::row_of(const MessageType& type) const {
  const wayfind_member* const begin = subject_.bundle->members;
  const wayfind_member* const end = begin + subject_.bundle->member_count;
  const auto* found = std::find_if(
      begin, end, [&](const wayfind_member& row) { return row.message == type.schema; });
  if (found != end) return *found;
  throw Failure("the agent's show " + subject_.name + " holds a " + type.schema->name +
                ", which does not belong in it");
}

const MessageType& Receiver::type_of(const ork_bundle_member& member) const {
  return *known_.at(luid_at(ork_bundle_member_info(&member)->luid)).type;
}

}  // namespace wayfind
