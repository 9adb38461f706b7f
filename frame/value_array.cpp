#include "frame/value_array.h"

#include "frame/array_storage.h"
#include "frame/primitives.h"

namespace frame {
namespace {

// The element to write a value to. Grows the array first if there is no such element. Null when
// *err is set.
void* reach_element(const Call& call, void* object, uint32_t index, const FieldRow& field) {
  if (index < stored_count(object, field)) {
    const DetachedCall own(call);
    void* element = array_get(own.handle, own.instance, object, index, own.err, field);
    contain(call, element, object);
    if (own.error() != ENOENT) {
      call.adopt(own.error());
      return element;
    }
  }
  array_set(call, object, index, nullptr, field);
  void* element = array_get(call.handle, call.instance, object, index, call.err, field);
  contain(call, element, object);
  return element;
}

}  // namespace

uint64_t array_get_value(ork_handle* handle, uint32_t instance, void* object, uint32_t index,
                         uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.start() || !gate(call, object, field)) return 0;
  void* element = array_get(handle, instance, object, index, err, field);
  if (element == nullptr) return 0;
  return with_element(field.kind,
                      [&](auto kind) { return uint64_t{kind.get_value(call, element)}; });
}

void array_get_mem(ork_handle* handle, uint32_t instance, void* object, void* to, uint32_t count,
                   uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.start() || !gate(call, object, field)) return;
  if (usable_count(object, field) < count) return call.fail(EINVAL);
  if (count != 0) memcpy(to, block_of(object, field), count * width_of(call, field));
}

void array_set_mem(ork_handle* handle, uint32_t instance, void* object, const void* from,
                   uint32_t count, uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!begin_write(call, object, field)) return;
  const uint32_t old_count = stored_count(object, field);
  const ValueBlock block = replace_values(call, object, count, field);
  if (block.start == nullptr) return call.fail(ENOMEM);

  const bool on = checked_mode<Function::array_set_mem>(handle, field) == Tracking::on;
  if (!tracked_as_asked<Function::array_set_mem, 0>(call, object, field)) {
    // The block is new, so the old values are lost; a counter must not exceed it.
    memset(block.start, 0, block.size);
    if (old_count > count) store_count(call, object, field, count);
    return;
  }
  if (count != 0) memcpy(block.start, from, block.size);
  store_count(call, object, field, count);
  if (!on) {
    if (count != old_count) drop_element_states(call, object, field);
    return;
  }
  uint8_t* entry = state_entry(call, object, field);
  store(call, entry, touched, nullptr);
  if (!reset_element_states(call, entry, count)) call.fail(ENOMEM);
}

void array_set(const Call& call, void* object, uint32_t index, const void* from,
               const FieldRow& field) {
  if (!begin_write(call, object, field)) return;
  if (!tracked_as_asked<Function::array_set, 0>(call, object, field)) return;
  if (index >= usable_count(object, field) && !grow_values(call, object, index, field)) return;
  if (from == nullptr) return;  // the caller only wanted the array to grow
  void* element = element_at(object, field, index);
  contain(call, element, object);
  with_element(field.kind, [&](auto kind) { kind.set(call, element, from); });
  if (!tracked_as_asked<Function::array_set, 2>(call, object, field)) return;
  if (mode_of(call.handle) == Tracking::on) touch_element(call, object, index, field);
}

void array_set_value(const Call& call, void* object, uint32_t index, uint64_t value,
                     const FieldRow& field) {
  if (!begin_write(call, object, field)) return;
  void* element = reach_element(call, object, index, field);
  if (call.failed()) return;
  if (element == nullptr) return call.fail(ENOENT);
  with_element(field.kind, [&](auto kind) {
    kind.set_value(call, element, static_cast<typename decltype(kind)::Value>(value));
  });
  if (!tracked_as_asked<Function::set_value, 0>(call, object, field)) return;
  if (mode_of(call.handle) == Tracking::on) touch_element(call, object, index, field);
}

}  // namespace frame
