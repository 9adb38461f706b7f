// The handle's own functions, each with the log in front of it. They get a pool or a table as first
// argument, and by that the recorder finds the function that it stands in front of.
#include <algorithm>
#include <vector>

#include "spy_recorder.h"

namespace spy {

namespace {

struct Observed {
  ork_handle* handle;
  ork_handle before; /* the functions as they were */
};
std::vector<Observed> observed;

unsigned alloc_countdown = 0;
unsigned shared_alloc_countdown = 0;

// True for the call that a countdown ends at.
bool strikes(unsigned& countdown) { return countdown != 0 && --countdown == 0; }

const ork_handle& by(void* ork_handle::*argument, const void* value) {
  return std::find_if(observed.begin(), observed.end(),
                      [&](const Observed& o) { return o.before.*argument == value; })
      ->before;
}

const ork_handle& by_handle(const ork_handle* handle) {
  return std::find_if(observed.begin(), observed.end(),
                      [&](const Observed& o) { return o.handle == handle; })
      ->before;
}

void write_down(const char* function, std::initializer_list<std::string> arguments) {
  if (Recorder::active()) {
    Recorder::call(joined(function, arguments));
  }
}

void* allocated(const char* function, uint32_t instance, size_t size, void* block) {
  if (Recorder::active()) {
    Recorder::call(joined(function, {text_of(instance), text_of(size)}) + "=" +
                   Recorder::name_block(block, size));
  }
  return block;
}

void* alloc(void* pool, uint32_t instance, size_t size) {
  void* const block = strikes(alloc_countdown)
                          ? nullptr
                          : by(&ork_handle::mem_pool, pool).alloc_fn(pool, instance, size);
  return allocated("alloc_fn", instance, size, block);
}

void* shared_alloc(void* pool, uint32_t instance, size_t size) {
  void* const block =
      strikes(shared_alloc_countdown)
          ? nullptr
          : by(&ork_handle::shared_pool, pool).shared_alloc_fn(pool, instance, size);
  return allocated("shared_alloc_fn", instance, size, block);
}

void free_block(void* pool, uint32_t instance, void* block) {
  write_down("free_fn", {text_of(instance), symbol(block)});
  Recorder::freed(block);
  by(&ork_handle::mem_pool, pool).free_fn(pool, instance, block);
}

void write_notify(ork_handle* handle, const void* address, size_t length, uint32_t instance,
                  const void* owner) {
  write_down("write_notify_fn",
             {symbol(address), text_of(length), text_of(instance), symbol(owner)});
  Recorder::announcement({static_cast<const uint8_t*>(address), length, owner});
  const Inside inside;
  by_handle(handle).write_notify_fn(handle, address, length, instance, owner);
}

void counter_notify(void* pool, void* counter, uint32_t one, uint32_t instance) {
  write_down("counter_notify_fn", {symbol(counter), text_of(one), text_of(instance)});
  Recorder::announcement({static_cast<const uint8_t*>(counter), sizeof(uint64_t), nullptr});
  const Inside inside;
  by(&ork_handle::mem_pool, pool).counter_notify_fn(pool, counter, one, instance);
}

ork_type_info* find_type(void* table, uint32_t instance, const char* luid_text) {
  write_down("type_table_find_fn", {text_of(instance), text_of(luid_text)});
  const Inside inside;
  return by(&ork_handle::type_table, table).type_table_find_fn(table, instance, luid_text);
}

uint32_t add_type(void* table, uint32_t instance, const char* luid_text, ork_type_info* copy) {
  write_down("type_table_add_fn", {text_of(instance), text_of(luid_text), text_of(copy)});
  const Inside inside;
  return by(&ork_handle::type_table, table).type_table_add_fn(table, instance, luid_text, copy);
}

}  // namespace

void observe(ork_handle* handle) {
  observed.push_back({handle, *handle});
  handle->alloc_fn = alloc;
  handle->free_fn = free_block;
  handle->write_notify_fn = write_notify;
  handle->counter_notify_fn = counter_notify;
  if (handle->shared_alloc_fn) {
    handle->shared_alloc_fn = shared_alloc;
  }
  if (handle->type_table_find_fn) {
    handle->type_table_find_fn = find_type;
    handle->type_table_add_fn = add_type;
  }
}

void forget(ork_handle* handle) {
  const auto found = std::find_if(observed.begin(), observed.end(),
                                  [&](const Observed& o) { return o.handle == handle; });
  handle->alloc_fn = found->before.alloc_fn;
  handle->free_fn = found->before.free_fn;
  handle->write_notify_fn = found->before.write_notify_fn;
  handle->counter_notify_fn = found->before.counter_notify_fn;
  handle->shared_alloc_fn = found->before.shared_alloc_fn;
  handle->type_table_find_fn = found->before.type_table_find_fn;
  handle->type_table_add_fn = found->before.type_table_add_fn;
  observed.erase(found);
}

void fail_alloc(unsigned nth) { alloc_countdown = nth; }

void fail_shared_alloc(unsigned nth) { shared_alloc_countdown = nth; }

}  // namespace spy
