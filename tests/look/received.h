// Messages as a client holds them: written by one handle, read from the wire by another.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "ork/platform.h"
#include "tools/look/message.h"

namespace look {

const wayfind_message& message_named(const std::string& name);
const wayfind_bundle& bundle_named(const std::string& name);
const wayfind_field& field_named(const std::string& record, const std::string& name);

class Received {
 public:
  explicit Received(ork_tracking tracking = ORK_TRACKING_ABSENT, const std::string& release = "");
  ~Received();
  Received(const Received&) = delete;
  Received& operator=(const Received&) = delete;

  ork_handle* handle() const { return handle_; }

  // A message with what the XML says: the elements of its record's fields, or its records whole.
  // Names may leave out the client layer's prefix.
  const Message& add(const std::string& name, const std::string& xml);
  // The same with a value in every field.
  const Message& add_filled(const wayfind_message& type, uint32_t elements);

  std::vector<Message> messages() const { return {messages_.begin(), messages_.end()}; }

 private:
  const Message& send(const wayfind_message& type, void* made);

  ork_handle* handle_;
  std::deque<Message> messages_;
};

}  // namespace look
