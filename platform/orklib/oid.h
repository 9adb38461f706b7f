// Objects that others refer to by an OID: such an object outlives its destroy until the last
// reference goes.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "ork/platform.h"

namespace ork {

struct Oid {
  void* object;
  ork_deferred_destroy_fn destroy;
  uint64_t references = 0;
  bool destroy_asked = false;
};

class Oids {
 public:
  Oid* add(void* object, ork_deferred_destroy_fn destroy);
  Oid* of_object(const void* object) const;
  Oid* known(const void* oid) const;  // null for a pointer that is no OID of this handle
  void remove(const Oid* oid);

 private:
  std::vector<std::unique_ptr<Oid>> oids_;
};

}  // namespace ork
