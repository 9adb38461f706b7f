// Messages of one kind that belong to whoever holds the list.
#pragma once

#include <vector>

#include "tools/wayfind/data/message_type.h"

namespace wayfind {

class MessageList {
 public:
  // The handle must outlive the list.
  MessageList(ork_handle* handle, const MessageType& type) : handle_(handle), type_(type) {}
  ~MessageList() {
    for (void* message : messages_) type_.destroy(handle_, ORK_NO_INSTANCE, message);
  }
  MessageList(const MessageList&) = delete;
  MessageList& operator=(const MessageList&) = delete;

  // A new message at the end, its records as they are made.
  void* add();

  size_t size() const { return messages_.size(); }
  void* at(size_t index) const { return messages_[index]; }

 private:
  ork_handle* handle_;
  const MessageType& type_;
  std::vector<void*> messages_;
};

}  // namespace wayfind
