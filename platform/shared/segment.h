// Memory that processes share under a name, mapped at one address in all of them, so that pointers
// into it hold in each.
#pragma once

#include <boost/interprocess/allocators/allocator.hpp>
#include <boost/interprocess/containers/map.hpp>
#include <boost/interprocess/indexes/iset_index.hpp>
#include <boost/interprocess/managed_external_buffer.hpp>
#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/mem_algo/rbtree_best_fit.hpp>
#include <boost/interprocess/sync/mutex_family.hpp>
#include <functional>
#include <string_view>

#include "ork/platform.h"
#include "robust_lock.h"

namespace ork {

// One lock guards the allocator and the maps, so that the allocator needs none.
using SharedMemory = boost::interprocess::basic_managed_external_buffer<
    char, boost::interprocess::rbtree_best_fit<boost::interprocess::null_mutex_family, void*>,
    boost::interprocess::iset_index>;

template <typename Key, typename Value>
using SharedMap = boost::interprocess::map<
    Key, Value, std::less<>,
    boost::interprocess::allocator<std::pair<const Key, Value>, SharedMemory::segment_manager>>;

// What stands at the beginning of the memory.
struct SharedHead {
  SharedHead(void* where, size_t bytes, SharedMemory::segment_manager* memory)
      : address(where), size(bytes), distances(memory), types(memory) {}

  uint64_t magic = 0;  // written last: a head without it was never finished
  void* address;
  uint64_t size;
  RobustLock lock;  // for all that follows, and the allocator
  ork_memory_report report{};
  SharedMap<uintptr_t, int32_t> distances;            // from an object's address to its state bytes
  SharedMap<std::string_view, ork_type_info*> types;  // keys lie inside the copies
};

class Segment {
 public:
  // Makes the memory, or maps what is there. Throws std::system_error with what ork_storage_open
  // tells, or boost::interprocess::interprocess_exception.
  Segment(const char* name, size_t size, void* address);

  SharedHead& head() const { return *static_cast<SharedHead*>(region_.get_address()); }
  SharedMemory& memory() { return memory_; }
  bool holds(const void* address) const {
    return reinterpret_cast<uintptr_t>(address) -
               reinterpret_cast<uintptr_t>(region_.get_address()) <
           region_.get_size();
  }

 private:
  boost::interprocess::mapped_region region_;
  SharedMemory memory_;
};

// Takes the name away. Processes that have the memory mapped keep it.
void remove_segment(const char* name);

}  // namespace ork
