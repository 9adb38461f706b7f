// Messages on stdout, in the library's own text or XML.
#pragma once

#include <string>
#include <vector>

#include "tools/wayfind/data/message_type.h"

namespace wayfind {

enum class Format { text, xml };

// "text" or "xml".
Format format_named(const std::string& name);

class MessagePrinter {
 public:
  MessagePrinter(ork_handle* handle, Format format)
      : handle_(handle), format_(format), buffer_(size_t{64} << 10) {}

  // XML output is one document: its messages stand inside an element of this name.
  void open(const std::string& name);
  void print(const MessageType& type, const void* message);
  void close(const std::string& name);

 private:
  ork_handle* handle_;
  Format format_;
  std::vector<char> buffer_;
};

}  // namespace wayfind
