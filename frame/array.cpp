#include "frame/array.h"

#include "frame/destroy.h"
#include "frame/initialize.h"

namespace frame {
namespace {

uint8_t reallocated[model::array_count];

}  // namespace

void report_reallocation(const FieldRow& field) {
  if (__atomic_exchange_n(&reallocated[field.array], uint8_t{1}, __ATOMIC_RELAXED) != 0) return;
  if (field.cls == model::Class::value_array)
    return trace::raise<Function::array_set, Form::reallocating>(field);
  trace::raise<Function::array_set_record, Form::reallocating>(field);
}

uint8_t* state_entry(const Call& call, void* object, const FieldRow& field) {
  return seen_state_block(call, object, owner(field)) + field.state;
}

bool replace_element_states(const Call& call, uint8_t* entry, uint64_t count, uint64_t kept) {
  uint8_t* word = entry + elements_offset;
  uint8_t* old = element_states(entry);
  announce(call, word, sizeof old, nullptr);
  auto* fresh = static_cast<uint8_t*>(allocate(call, count));
  put(word, fresh);
  if (fresh != nullptr) {
    memset(fresh, 0, count);
    if (old != nullptr) memcpy(fresh, old, kept < count ? kept : count);
  }
  if (old != nullptr) release(call, old);
  return fresh != nullptr;
}

bool renew_element_states(const Call& call, uint8_t* entry, uint64_t count) {
  uint8_t* word = entry + elements_offset;
  if (void* old = element_states(entry); old != nullptr) release(call, old);
  announce(call, word, sizeof(void*), nullptr);
  void* fresh = allocate(call, count);
  put(word, fresh);
  if (fresh != nullptr) memset(fresh, 0, count);
  return fresh != nullptr;
}

void drop_element_states(const Call& call, void* object, const FieldRow& field) {
  if (!has_flag(object, OBJ_STATE_TRACKED)) return;
  uint8_t* entry = state_entry(call, object, field);
  void* old = element_states(entry);
  if (old == nullptr) return;
  store<void*>(call, entry + elements_offset, nullptr, nullptr);
  release(call, old);
}

void touch_element(const Call& call, void* object, uint64_t index, const FieldRow& field) {
  uint8_t* entry = state_block(call, object, owner(field)) + field.state;
  store(call, entry, touched, nullptr);
  if (uint8_t* elements = element_states(entry); elements != nullptr)
    store(call, elements + index, touched, nullptr);
}

uint64_t initialize_elements(const Call& call, const RecordBlock& block, uint64_t first,
                             const FieldRow& field) {
  const RecordRow& record = child_record(field);
  for (uint64_t i = first; i < block.count; ++i) {
    initialize(call, block.element(i), descriptor(record),
               {1, 0, OBJ_NESTED, block.element_state(i)}, record);
    if (call.failed()) return i;
  }
  return block.count;
}

uint64_t first_tracked(const RecordBlock& block) {
  uint64_t i = 0;
  while (i < block.count && !has_flag(block.element(i), OBJ_STATE_TRACKED)) ++i;
  return i;
}

void close_ranks(const Call& call, const RecordBlock& block, uint64_t kept, const FieldRow& field) {
  const RecordBlock left = record_block(block.start, kept, field);
  if (first_tracked(left) == kept) return;
  announce(call, left.element_state(0), kept * left.state, nullptr);
  memmove(left.element_state(0), block.element_state(0), kept * left.state);
  uint32_t local = 0;
  const Call own{call.handle, call.instance, &local};
  for (uint64_t i = 0; i < kept; ++i) {
    orklib_update_sttr_offset(call.handle, call.instance, left.element(i), left.distance(i));
    offset_update(own, left.element(i), left.element_state(i), child_record(field));
  }
}

void destroy_elements(const Call& call, void* object, uint64_t count, const FieldRow& field) {
  if (field.cls != model::Class::record_array) return;
  for (uint64_t i = 0; i < count; ++i) {
    destroy_internal(call.handle, call.instance, element_at(object, field, i), 0,
                     child_record(field));
  }
}

void destroy_array(const Call& call, void* object, const FieldRow& field) {
  destroy_elements(call, object, element_count(object, field), field);
  if (void* block = block_of(object, field); block != nullptr) release(call, block);
  store<void*>(call, field_of(object, field), nullptr, nullptr);
}

void array_remove_elements(ork_handle* handle, uint32_t instance, void* object,
                           const FieldRow& field) {
  if (object == nullptr || block_of(object, field) == nullptr) return;
  uint32_t local = 0;
  const Call call{handle, instance, &local};
  destroy_elements(call, object, count_of(object, field), field);
  release(call, block_of(object, field));
  store<void*>(call, field_of(object, field), nullptr, object);
  store_count(call, object, field, 0);
}

void* array_get(ork_handle* handle, uint32_t instance, void* object, uint32_t index, uint32_t* err,
                const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.begins() || !gate(call, object, field)) return nullptr;
  if (index >= element_count(object, field)) {
    call.fail(ENOENT);
    return nullptr;
  }
  void* element = element_at(object, field, index);
  if (field.cls == model::Class::record_array) contain(call, element, nullptr);
  contain(call, element, object);
  return element;
}

}  // namespace frame
