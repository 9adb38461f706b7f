// The frames of one show, made one by one while the client takes them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/wayfind/data/data_folder.h"
#include "tools/wayfind/data/subject.h"

namespace wayfind {

class Answer {
 public:
  // The handle is the client's: its domain knows what the client's release takes. A show of which
  // the client takes nothing is a Failure.
  Answer(const Subject& subject, DataFolder& data, ork_handle* handle);

  bool done() const { return stage_ == Stage::done; }

  // Appends the next frame. A Failure leaves the bundle aborted, with the abort's frame appended.
  void append_next(std::vector<uint8_t>& out);

  const Subject& subject() const { return subject_; }
  size_t messages_sent() const { return messages_sent_; }

 private:
  enum class Stage { start, members, commit, done };
  struct Part {
    const MessageType* type;
    std::shared_ptr<const MessageList> messages;
  };

  void append_control(const char* kind, std::vector<uint8_t>& out);
  void append_message(const MessageType& type, void* message, std::vector<uint8_t>& out);
  void send(const uint8_t* frame, uint32_t length, std::vector<uint8_t>& out);
  void skip_finished_parts();

  const Subject& subject_;
  const DataFolder& data_;
  ork_handle* handle_;
  Stage stage_ = Stage::start;
  std::vector<Part> parts_;
  size_t part_ = 0;
  size_t entry_ = 0;
  size_t messages_sent_ = 0;
  std::vector<uint8_t> frame_;
};

}  // namespace wayfind
