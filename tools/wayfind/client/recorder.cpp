#include "tools/wayfind/client/recorder.h"

#include <stdio_ext.h>

#include <cerrno>
#include <cstdio>

#include "ork/bundle.h"
#include "ork/platform.h"
#include "tools/common/failure.h"

namespace wayfind {
namespace {

// The library writes a message at once and none of more bytes. With room for it in the stream's
// buffer the buffer grows by exactly what was written.
constexpr size_t longest_message = 0x10000;
constexpr size_t buffer_size = 4 * longest_message;

}  // namespace

Recorder::Recorder(const std::string& path) : path_(path) {
  if (path_.empty()) return;
  uint32_t err = 0;
  ork_recorder_open(path_.c_str(), &err);
  expect_done(err, "cannot record to " + path_);
  buffer_.resize(buffer_size);
  std::setvbuf(orklib_msg_recorder_get_handle(), buffer_.data(), _IOFBF, buffer_.size());
  ork_recorder_switch(1);
}

Recorder::~Recorder() {
  uint32_t lost = 0;
  ork_recorder_close(&lost);
}

void Recorder::write_out() {
  if (std::fflush(orklib_msg_recorder_get_handle()) != 0 && error_ == 0) error_ = errno;
}

void Recorder::before_message() {
  if (path_.empty()) return;
  if (__fpending(orklib_msg_recorder_get_handle()) > buffer_size - longest_message) write_out();
  pending_ = __fpending(orklib_msg_recorder_get_handle());
}

void Recorder::after_message(const std::string& name) {
  if (path_.empty()) return;
  if (__fpending(orklib_msg_recorder_get_handle()) == pending_) ++missing_[name];
}

std::string Recorder::finish() {
  if (path_.empty()) return "";
  write_out();
  uint32_t err = 0;
  ork_recorder_close(&err);
  if (error_ == 0) error_ = static_cast<int>(err);
  if (error_ != 0) return "cannot record to " + path_ + ": " + words_for(error_);
  std::string list;
  for (const auto& [name, count] : missing_)
    list += (list.empty() ? "" : ", ") + std::to_string(count) + " " + name;
  if (list.empty()) return "";
  return path_ + " lacks what is too long to be recorded: " + list +
         "; keep what --format xml prints";
}

}  // namespace wayfind
