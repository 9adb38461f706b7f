// Messages as JSON. Its form is told by the schema of json_schema.h.
#pragma once

#include <string>

#include "tools/look/message.h"

namespace look {

struct JsonStyle {
  bool lines = false;   // an object a line, in place of one array
  bool states = false;  // with the state bytes of tracked records
};

// Appends a document to a text, which may be taken away between the calls.
class JsonDocument {
 public:
  JsonDocument(ork_handle* handle, JsonStyle style) : handle_(handle), style_(style) {}

  void open(std::string& out) const;
  void put(std::string& out, const Message& message);
  void close(std::string& out) const;

 private:
  ork_handle* handle_;
  JsonStyle style_;
  bool is_empty_ = true;
};

}  // namespace look
