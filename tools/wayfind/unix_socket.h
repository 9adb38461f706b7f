// Stream sockets with a path in the file system.
#pragma once

#include <string>

#include "owned.h"

namespace wayfind {

Descriptor connect_to_agent(const std::string& path);

// The place where an agent listens. The file goes when the agent does, unless somebody has put another one there.
class Listener {
 public:
  // Takes over the path of an agent that is gone; one that still answers is left alone.
  explicit Listener(const std::string& path);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  int get() const { return socket_.get(); }

 private:
  std::string path_;
  Descriptor socket_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace wayfind
