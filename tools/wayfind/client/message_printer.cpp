#include "tools/wayfind/client/message_printer.h"

#include <cerrno>
#include <cstdio>

#include "tools/common/failure.h"
#include "tools/common/standard_output.h"

namespace wayfind {
namespace {

constexpr size_t largest_text = size_t{256} << 20;

}  // namespace

Format format_named(const std::string& name) { return name == "xml" ? Format::xml : Format::text; }

void MessagePrinter::open(const std::string& name) {
  if (format_ == Format::xml) std::printf("<%s>\n", name.c_str());
}

void MessagePrinter::close(const std::string& name) {
  if (format_ == Format::xml) std::printf("</%s>\n", name.c_str());
}

void MessagePrinter::print(const MessageType& type, const void* message) {
  MessageType::Text* const render = format_ == Format::xml ? type.to_xml : type.print;
  for (;;) {
    uint32_t err = 0;
    buffer_[0] = 0;
    const uint32_t length = render(handle_, ORK_NO_INSTANCE, buffer_.data(), message,
                                   static_cast<uint32_t>(buffer_.size()), &err);
    if (err == 0) return write_out({buffer_.data(), length});
    if (err != EMSGSIZE || buffer_.size() >= largest_text)
      expect_done(err, std::string("cannot print ") + type.schema->name);
    buffer_.resize(2 * buffer_.size());
  }
}

}  // namespace wayfind
