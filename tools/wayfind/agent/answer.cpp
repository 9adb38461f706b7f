#include "tools/wayfind/agent/answer.h"

#include "tools/common/failure.h"
#include "tools/wayfind/agent/counts.h"

namespace wayfind {
namespace {

using ControlMarshal = uint32_t(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);

constexpr uint32_t control_length = ORK_MESSAGE_HEADER_WIRE_SIZE + ORK_LUID_SIZE;

uint32_t append_to_vector(void* ctx, const uint8_t* bytes, uint32_t length) {
  auto& out = *static_cast<std::vector<uint8_t>*>(ctx);
  out.insert(out.end(), bytes, bytes + length);
  return 0;
}

// A message that tells counts is made if the data has none.
std::shared_ptr<const MessageList> entries(DataFolder& data, const wayfind_message& message) {
  if (tells_counts(message) && data.messages(message)->size() == 0) {
    auto made = std::make_shared<MessageList>(data.handle(), message_type(message));
    made->add();
    data.replace(message, std::move(made));
  }
  return data.messages(message);
}

}  // namespace

Answer::Answer(const Subject& subject, DataFolder& data, ork_handle* handle)
    : subject_(subject), data_(data), handle_(handle) {
  const wayfind_bundle& bundle = *subject.bundle;
  for (unsigned i = 0; i < bundle.member_count; ++i) {
    const MessageType& type = message_type(*bundle.members[i].message);
    if (type.is_valid(handle) != 0) parts_.push_back({&type, entries(data, *type.schema)});
  }
  if (parts_.empty())
    throw Failure("the release on the other side takes no message of show " + subject.name);
}

void Answer::append_next(std::vector<uint8_t>& out) {
  switch (stage_) {
    case Stage::start:
      append_control("start", out);
      stage_ = Stage::members;
      skip_finished_parts();
      return;
    case Stage::members: {
      const Part& part = parts_[part_];
      void* message = part.messages->at(entry_);
      fill_counts(*subject_.bundle, data_, handle_, *part.type->schema, message);
      append_message(*part.type, message, out);
      ++messages_sent_;
      ++entry_;
      skip_finished_parts();
      return;
    }
    case Stage::commit:
      append_control("commit", out);
      stage_ = Stage::done;
      return;
    case Stage::done: return;
  }
}

void Answer::skip_finished_parts() {
  while (part_ < parts_.size() && entry_ == parts_[part_].messages->size()) {
    ++part_;
    entry_ = 0;
  }
  if (part_ == parts_.size()) stage_ = Stage::commit;
}

void Answer::append_control(const char* kind, std::vector<uint8_t>& out) {
  ControlMarshal* marshal = nullptr;
  find_function(subject_.bundle->functions, std::string("_bundle_") + kind + "_message_marshal",
                marshal);
  uint8_t frame[control_length];
  uint32_t err = 0;
  const uint32_t length = marshal(handle_, ORK_NO_INSTANCE, frame, nullptr, sizeof frame, &err);
  expect_done(err, std::string("cannot ") + kind + " show " + subject_.name);
  send(frame, length, out);
}

void Answer::append_message(const MessageType& type, void* message, std::vector<uint8_t>& out) {
  frame_.resize(type.len(handle_, ORK_NO_INSTANCE, message));
  uint32_t err = 0;
  const uint32_t length = type.marshal(handle_, ORK_NO_INSTANCE, frame_.data(), message,
                                       static_cast<int32_t>(frame_.size()), &err);
  if (err == 0) return send(frame_.data(), length, out);
  stage_ = Stage::done;
  append_control("abort", out);
  throw Failure("show " + subject_.name + " aborted: message " +
                std::to_string(messages_sent_ + 1) + ", " + type.schema->name +
                ", cannot be sent: " + words_for(err));
}

void Answer::send(const uint8_t* frame, uint32_t length, std::vector<uint8_t>& out) {
  uint32_t err = 0;
  ork_send_frame(handle_, frame, length, append_to_vector, &out, &err);
  expect_done(err, "show " + subject_.name);
}

}  // namespace wayfind
