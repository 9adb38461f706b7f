#include "tools/wayfind/client/message_printer.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "tools/common/failure.h"
#include "tools/common/printable.h"
#include "tools/common/standard_output.h"

namespace wayfind {
namespace {

constexpr size_t largest_text = size_t{512} << 20;

}  // namespace

Format format_named(const std::string& name) { return name == "xml" ? Format::xml : Format::text; }

void MessagePrinter::open(const std::string& name) {
  if (format_ == Format::xml) std::printf("<%s>\n", name.c_str());
}

void MessagePrinter::close(const std::string& name) {
  if (format_ == Format::xml) std::printf("</%s>\n", name.c_str());
}

// A text that the room does not suffice for is walked through to its end all the same: the room is
// what the message may need at most, and one walk is enough.
void MessagePrinter::print(const MessageType& type, const void* message) {
  const size_t wire_length = type.len(handle_, ORK_NO_INSTANCE, message);
  make_room(std::min(bound(type).of(wire_length), largest_text));
  uint32_t err = 0;
  uint32_t length = render(type, message, err);
  if (err == EMSGSIZE && size_ < largest_text) {
    make_room(largest_text);
    err = 0;
    length = render(type, message, err);
  }
  if (err == EMSGSIZE)
    throw Failure("cannot print " + std::string(type.schema->name) + ": it is longer than " +
                  std::to_string(largest_text >> 20) + " MiB");
  expect_done(err, std::string("cannot print ") + type.schema->name);
  const std::string_view text(buffer_.get(), length);
  const bool is_ascii = std::all_of(text.begin(), text.end(), [](char c) { return c >= 0; });
  write_out(is_ascii ? text : printable_lines(text));
}

uint32_t MessagePrinter::render(const MessageType& type, const void* message, uint32_t& err) {
  buffer_[0] = 0;
  return (format_ == Format::xml ? type.to_xml : type.print)(
      handle_, ORK_NO_INSTANCE, buffer_.get(), message, static_cast<uint32_t>(size_), &err);
}

void MessagePrinter::make_room(size_t size) {
  if (size <= size_) return;
  buffer_.reset();
  buffer_.reset(new char[size]);
  size_ = size;
}

const TextBound& MessagePrinter::bound(const MessageType& type) {
  return bounds_.try_emplace(&type, *type.schema, format_ == Format::xml).first->second;
}

}  // namespace wayfind
