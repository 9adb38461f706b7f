// Messages on stdout, in the library's own text or XML.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "tools/wayfind/client/text_bound.h"
#include "tools/wayfind/data/message_type.h"

namespace wayfind {

enum class Format { text, xml };

// "text" or "xml".
Format format_named(const std::string& name);

class MessagePrinter {
 public:
  MessagePrinter(ork_handle* handle, Format format) : handle_(handle), format_(format) {}

  // XML output is one document: its messages stand inside an element of this name.
  void open(const std::string& name);
  void print(const MessageType& type, const void* message);
  void close(const std::string& name);

 private:
  uint32_t render(const MessageType& type, const void* message, uint32_t& err);
  void make_room(size_t size);
  const TextBound& bound(const MessageType& type);

  ork_handle* handle_;
  Format format_;
  std::unique_ptr<char[]> buffer_;  // pages that no text reached cost nothing
  size_t size_ = 0;
  std::map<const MessageType*, TextBound> bounds_;
};

}  // namespace wayfind
