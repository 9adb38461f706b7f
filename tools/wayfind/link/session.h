// How a process meets others: as which release, and with or without state tracking.
#pragma once

#include <string>

#include "tools/common/owned.h"

namespace CLI {
class App;
}

namespace wayfind {

class Session {
 public:
  // --release and --tracking. The session must outlive the parsing.
  void add_options(CLI::App& command);

  bool tracks() const { return tracking_ == "on"; }

  // Reads the release file, if one was named. To be called once before the rest.
  void begin();

  // A handle of this release on the given storage, or on its own with a null storage.
  Handle make_handle(ork_storage* storage) const;

 private:
  std::string release_path_;
  std::string tracking_ = "off";
  TypeList release_;
};

// What a handle announces to its peer.
TypeList announcement(const ork_handle& handle);

}  // namespace wayfind
