// Stream sockets with a path in the file system.
#pragma once

#include <sys/types.h>

#include <string>

#include "tools/common/owned.h"

namespace wayfind {

// patience: seconds that the agent may take to let a client in, and each write to take bytes.
Descriptor connect_to_agent(const std::string& path, unsigned patience);

// The place where an agent listens. The file goes when the agent does, unless somebody has put
// another one there.
class Listener {
 public:
  // Takes over the path of an agent that is gone; one that still answers is left alone. The file has
  // this mode from the start, whatever the process's mask.
  Listener(const std::string& path, mode_t mode);
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
