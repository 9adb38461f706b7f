// Owners for what the platform hands out.
#pragma once

#include <unistd.h>

#include <memory>
#include <utility>

#include "ork/platform.h"

namespace wayfind {

struct Freed {
  void operator()(ork_handle* handle) const { ork_handle_destroy(handle, nullptr); }
  void operator()(ork_storage* storage) const { ork_storage_destroy(storage); }
  void operator()(ork_type_list* list) const { ork_type_list_free(list); }
  void operator()(ork_dispatcher* dispatcher) const { ork_dispatcher_free(dispatcher); }
  void operator()(ork_xml* xml) const { ork_xml_free(xml); }
};
using Handle = std::unique_ptr<ork_handle, Freed>;
using Storage = std::unique_ptr<ork_storage, Freed>;
using TypeList = std::unique_ptr<ork_type_list, Freed>;
using Dispatcher = std::unique_ptr<ork_dispatcher, Freed>;
using Xml = std::unique_ptr<ork_xml, Freed>;

// A file descriptor.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  int get() const { return number_; }

 private:
  int number_;
};

}  // namespace wayfind
