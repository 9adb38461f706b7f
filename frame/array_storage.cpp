// Observers see announcements, allocations and releases, so their order is fixed for each
// operation. Where two operations differ, the comment on each says why.
#include "frame/array_storage.h"

#include "frame/destroy.h"
#include "frame/primitives.h"
#include "frame/size.h"

namespace frame {
namespace {

uint8_t reallocated[model::array_count];

// Each array that had to move is reported once per process, as an error.
void report_reallocation(const FieldRow& field) {
  if (__atomic_exchange_n(&reallocated[field.array], uint8_t{1}, __ATOMIC_RELAXED) != 0) return;
  if (field.cls == model::Class::value_array)
    return trace::raise<Function::array_set, Form::reallocating>(field);
  trace::raise<Function::array_set_record, Form::reallocating>(field);
}

void destroy_elements(const Call& call, void* object, uint64_t count, const FieldRow& field) {
  if (field.cls != model::Class::record_array) return;
  for (uint64_t i = 0; i < count; ++i) {
    destroy_internal(call.handle, call.instance, element_at(object, field, i), 0,
                     child_record(field));
  }
}

}  // namespace

size_t width_of(const Call& call, const FieldRow& field) {
  return with_element(field.kind, [&](auto element) -> size_t { return element.size(call); });
}

// Growing. --------------------------------------------------------------------

namespace {

// The old block is needed until its elements have moved, and a failed allocation leaves the array
// as it is: so allocate, announce and store the pointer, move, free, and count last.
template <class Move>
bool grow_block(const Call& call, void* object, uint64_t count, size_t size, const FieldRow& field,
                Move move) {
  void* old = block_of(object, field);
  void* fresh = allocate(call, size);
  if (fresh == nullptr) {
    call.fail(ENOMEM);
    return false;
  }
  store(call, field_of(object, field), fresh, object);
  memset(fresh, 0, size);
  if (old != nullptr) {
    move(old, fresh);
    release(call, old);
  }
  store_count(call, object, field, count);
  return true;
}

template <Function F>
bool grow_states(const Call& call, void* object, uint64_t count, uint64_t kept,
                 const FieldRow& field) {
  if (checked_mode<F, 1>(call.handle, field) != Tracking::on) {
    drop_element_states(call, object, field);
    return true;
  }
  if (!tracked_as_asked<F, 1>(call, object, field)) return false;
  if (grow_element_states(call, state_entry(call, object, field), count, kept)) return true;
  call.fail(ENOMEM);
  return false;
}

}  // namespace

bool grow_values(const Call& call, void* object, uint32_t index, const FieldRow& field) {
  const uint32_t old_count = usable_count(object, field);
  const uint64_t count = uint64_t{index} + 1;
  if (block_of(object, field) != nullptr) report_reallocation(field);
  const size_t width = width_of(call, field);
  const auto move = [&](const void* from, void* to) { memcpy(to, from, old_count * width); };
  return grow_block(call, object, count, count * width, field, move) &&
         grow_states<Function::array_set>(call, object, count, old_count, field);
}

bool grow_records(const Call& call, void* object, uint32_t index, const FieldRow& field) {
  const bool tracked = mode_of(call.handle) == Tracking::on;
  const RecordBlock from =
      record_block(block_of(object, field), usable_count(object, field), field);
  if (from.start != nullptr) report_reallocation(field);
  const uint64_t count = uint64_t{index} + 1;
  if (!states_in_reach(tracked, count, field)) {
    call.fail(ENOMEM);
    return false;
  }
  const auto move = [&](void*, void* to) {
    move_elements(call, object, from, record_block(to, count, field), tracked, field);
  };
  if (!grow_block(call, object, count, count * record_stride(tracked, field), field, move))
    return false;
  const RecordBlock to = record_block(block_of(object, field), count, field);
  for (uint64_t i = from.count; tracked && i < count; ++i) register_states(call, to, i);
  const uint64_t made = initialize_elements(call, to, from.count, child_record(field));
  if (made < count) keep_records(call, object, to, made, field);
  return grow_states<Function::array_set_record>(call, object, count, from.count, field) &&
         made == count;
}

// Replacing. ------------------------------------------------------------------

namespace {

// Nothing is kept, so the old block goes first: there is never more than one. The pointer is
// announced before the allocation that decides its value. `size` is called between the two: for
// arrays of values it may be a call to the runtime.
template <class Size>
void* replace_block(const Call& call, void* object, const FieldRow& field, Size size) {
  if (void* old = block_of(object, field); old != nullptr) release(call, old);
  announce(call, field_of(object, field), sizeof(void*), object);
  void* fresh = allocate(call, size());
  put(field_of(object, field), fresh);
  return fresh;
}

// The same when no allocation can succeed.
void remove_block(const Call& call, void* object, const FieldRow& field) {
  if (void* old = block_of(object, field); old != nullptr) release(call, old);
  store<void*>(call, field_of(object, field), nullptr, object);
}

// A block of records that was allocated while tracking was off has no state blocks.
bool has_room_for_states(const Refit& refit, const void* block, const FieldRow& field) {
  return field.kind != Kind::record || !refit.tracked || has_flag(block, OBJ_STATE_TRACKED);
}

// An array of records without its block has no elements at all; and no array keeps fewer element
// bytes than its count.
bool out_of_memory(const Call& call, void* object, const FieldRow& field) {
  drop_element_states(call, object, field);
  if (field.kind == Kind::record) store_count(call, object, field, 0);
  call.fail(ENOMEM);
  return false;
}

bool refit_block(const Call& call, void* object, uint32_t count, const Refit& refit,
                 const FieldRow& field) {
  const bool of_records = field.kind == Kind::record;
  const size_t stride =
      of_records ? size_of(call.handle, child_record(field)) : size_t{field.width};
  const size_t size = count * stride;
  void* block = block_of(object, field);
  const bool keeps = refit.reuse && block != nullptr && refit.old_count == count &&
                     has_room_for_states(refit, block, field);
  if (refit.reuse && block != nullptr) destroy_elements(call, object, refit.old_count, field);
  if (keeps) {
    announce(call, block, size, object);
  } else if (of_records && !states_in_reach(refit.tracked, count, field)) {
    remove_block(call, object, field);
    return out_of_memory(call, object, field);
  } else {
    block = replace_block(call, object, field, [size] { return size; });
    if (block == nullptr) return out_of_memory(call, object, field);
  }
  memset(block, 0, size);
  return true;
}

// One byte per element. Without state bytes in the image the old ones are kept, as far as the new
// count reaches.
bool refit_element_states(const Call& call, void* object, uint32_t count, const Refit& refit,
                          const FieldRow& field) {
  const bool sent = refit.sent != nullptr;
  if (!sent && refit.old_count == count) return true;
  uint8_t* entry = sent ? refit.sent + field.state : state_entry(call, object, field);
  uint8_t* elements = element_states(entry);
  if (sent && refit.reuse && refit.old_count == count && elements != nullptr) {
    announce(call, elements, count, nullptr);
    memset(elements, 0, count);
    return true;
  }
  const bool made = sent ? reset_element_states(call, entry, count)
                         : grow_element_states(call, entry, count, refit.old_count);
  return made || out_of_memory(call, object, field);
}

}  // namespace

ValueBlock replace_values(const Call& call, void* object, uint32_t count, const FieldRow& field) {
  size_t size = 0;
  void* start =
      replace_block(call, object, field, [&] { return size = count * width_of(call, field); });
  return {start, size};
}

bool refit_array(const Call& call, void* object, const Refit& refit, const FieldRow& field) {
  const uint32_t count = stored_count(object, field);
  if (count == 0) {
    free_elements(call, object, refit.old_count, field);
    return true;
  }
  if (!refit_block(call, object, count, refit, field)) return false;
  if (refit.tracked) return refit_element_states(call, object, count, refit, field);
  if (count != refit.old_count) drop_element_states(call, object, field);
  return true;
}

void keep_records(const Call& call, void* object, const RecordBlock& block, uint64_t kept,
                  const FieldRow& field) {
  store_count(call, object, field, kept);
  compact_states(call, block, kept, field);
}

// Freeing and detaching. ------------------------------------------------------

// The object lives on: the store of the null pointer names it as owner.
void free_elements(const Call& call, void* object, uint64_t count, const FieldRow& field) {
  void* block = block_of(object, field);
  if (block == nullptr) return;
  destroy_elements(call, object, count, field);
  release(call, block);
  store<void*>(call, field_of(object, field), nullptr, object);
}

// The object is going: the store names no owner, and is made whether or not there was a block. The
// counter stays.
void destroy_array(const Call& call, void* object, const FieldRow& field) {
  destroy_elements(call, object, usable_count(object, field), field);
  if (void* block = block_of(object, field); block != nullptr) release(call, block);
  store<void*>(call, field_of(object, field), nullptr, nullptr);
}

void detach_array(const Call& call, void* from, const RecordRow& record) {
  for (const FieldRow& field : model::fields_of(record)) {
    if (field.array == model::no_type) continue;
    store<void*>(call, field_of(from, field), nullptr, from);
    store_count(call, from, field, 0);
  }
}

void detach_all_arrays(const Call& call, void* from, const RecordRow& record) {
  if (!record.holds_array) return;
  for (const FieldRow& field : fields_in_layout(record, from)) {
    if (is_embedded_record(field))
      detach_all_arrays(call, field_of(from, field), child_record(field));
  }
  if (record.has_array) detach_array(call, from, record);
}

// Element bytes. --------------------------------------------------------------

// Old bytes are needed until they are copied, so they are freed last.
bool grow_element_states(const Call& call, uint8_t* entry, uint64_t count, uint64_t kept) {
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

// Nothing is kept, so the old bytes are freed first.
bool reset_element_states(const Call& call, uint8_t* entry, uint64_t count) {
  uint8_t* word = entry + elements_offset;
  if (void* old = element_states(entry); old != nullptr) release(call, old);
  announce(call, word, sizeof(void*), nullptr);
  void* fresh = allocate(call, count);
  put(word, fresh);
  if (fresh != nullptr) memset(fresh, 0, count);
  return fresh != nullptr;
}

// No successor: the pointer is null before the bytes are freed.
void drop_element_states(const Call& call, void* object, const FieldRow& field) {
  if (!has_flag(object, OBJ_STATE_TRACKED)) return;
  uint8_t* entry = state_entry(call, object, field);
  void* old = element_states(entry);
  if (old == nullptr) return;
  store<void*>(call, entry + elements_offset, nullptr, nullptr);
  release(call, old);
}

void drop_all_element_states(const Call& call, void* object, const RecordRow& record) {
  if (!record.holds_array) return;
  for (const FieldRow& field : fields_in_layout(record, object)) {
    if (is_embedded_record(field))
      drop_all_element_states(call, field_of(object, field), child_record(field));
    if (field.array != model::no_type) drop_element_states(call, object, field);
  }
}

// The object is going: the pointers are cleared unannounced.
void free_element_states(const Call& call, uint8_t* states, const RecordRow& record) {
  for (const FieldRow& field : model::fields_of(record)) {
    if (field.array == model::no_type) continue;
    uint8_t* entry = states + field.state;
    if (void* elements = element_states(entry); elements != nullptr) release(call, elements);
    put<void*>(entry + elements_offset, nullptr);
  }
}

void detach_element_states(const Call& call, void* from, const RecordRow& record) {
  for (const FieldRow& field : model::fields_of(record)) {
    if (field.array != model::no_type)
      store<void*>(call, state_entry(call, from, field) + elements_offset, nullptr, nullptr);
  }
}

}  // namespace frame
