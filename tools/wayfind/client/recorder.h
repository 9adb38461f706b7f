// The recording of a show. The library writes each message that comes in, and says nothing of one
// that it cannot: whoever takes a message watches whether the recording grows.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace wayfind {

class Recorder {
 public:
  // Appends to the file; an empty path records nothing. One at a time.
  explicit Recorder(const std::string& path);
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // Around each message that comes in.
  void before_message();
  void after_message(const std::string& name);

  // Ends it. What is wrong with the recording, empty when all is in it.
  std::string finish();

 private:
  void write_out();

  const std::string& path_;
  std::vector<char> buffer_;  // the stream's
  size_t pending_ = 0;        // bytes in it before the message
  int error_ = 0;
  std::map<std::string, size_t> missing_;  // by name
};

}  // namespace wayfind
