#include "frame/record_array.h"

#include "frame/array.h"
#include "frame/whole_record.h"

namespace frame {
namespace {

// With tracking off the new block has no state bytes. Elements that had some lose them, with
// everything that led there.
void leave_states_behind(const Call& call, void* from, void* to, const RecordRow& record) {
  uint32_t local = 0;
  const Call own{call.handle, call.instance, &local};
  drop_all_element_states(own, from, record);
  offset_remove(own, from, record);
  ork_hd_mapping_destroy(own.handle, own.instance, from, own.err);
  disclaim_states(to, record);
}

void point_at_states(const Call& call, const RecordBlock& to, uint64_t i, const RecordRow& record) {
  orklib_update_sttr_offset(call.handle, call.instance, to.element(i), to.distance(i));
  offset_update(call, to.element(i), to.element_state(i), record);
}

void forget_old_element(const Call& call, void* object, void* element, bool on,
                        const RecordRow& record) {
  if (on) {
    uint32_t local = 0;
    const Call own{call.handle, call.instance, &local};
    offset_remove(own, element, record);
    ork_hd_mapping_destroy(own.handle, own.instance, element, own.err);
  }
  contain(call, element, object);
  if (watched(call)) orkdb_plat_set_detach(call.handle, call.instance, element, 0);
}

// Where the old elements' state bytes begin, or null: behind the elements that the block was made
// for. An 8-bit counter may have wrapped since, so there the runtime is asked for what it was told.
const uint8_t* old_states(const Call& call, const RecordBlock& from, const FieldRow& field) {
  const uint64_t i = first_tracked(from);
  if (i == from.count) return nullptr;
  return field.counter_kind == Kind::u_int8 ? mapped_states(call, from.element(i)) - i * from.state
                                            : from.element_state(0);
}

// State bytes first, then bodies, then whatever must follow an element to its new place. Tracked
// elements always lie in a block with state bytes.
void move_elements(const Call& call, void* object, const RecordBlock& from, const RecordBlock& to,
                   bool on, const FieldRow& field) {
  const RecordRow& record = child_record(field);
  const uint8_t* states = on ? old_states(call, from, field) : nullptr;
  if (states != nullptr) memcpy(to.element_state(0), states, from.count * from.state);
  memcpy(to.start, from.start, from.count * from.body);
  for (uint64_t i = 0; i < from.count; ++i) {
    if (on) {
      point_at_states(call, to, i, record);
    } else if (has_flag(from.element(i), OBJ_STATE_TRACKED | OBJ_STTR_OFFSET)) {
      leave_states_behind(call, from.element(i), to.element(i), record);
    }
  }
  for (uint64_t i = 0; i < from.count; ++i) {
    post_copyout_cleanup(call, to.element(i), from.element(i), record);
    forget_old_element(call, object, from.element(i), on, record);
  }
}

bool grow(const Call& call, void* object, uint32_t index, const FieldRow& field) {
  const bool on = mode_of(call.handle) == Tracking::on;
  void* old = block_of(object, field);
  const RecordBlock from = record_block(old, element_count(object, field), field);
  if (old != nullptr) report_reallocation(field);
  const uint64_t count = uint64_t{index} + 1;
  const size_t size = count * record_stride(on, field);
  void* fresh = states_in_reach(on, count, field) ? allocate(call, size) : nullptr;
  if (fresh == nullptr) {
    call.fail(ENOMEM);
    return false;
  }
  store(call, field_of(object, field), fresh, object);
  memset(fresh, 0, size);
  const RecordBlock to = record_block(fresh, count, field);
  if (old != nullptr) {
    move_elements(call, object, from, to, on, field);
    release(call, old);
  }
  store_count(call, object, field, count);
  for (uint64_t i = from.count; on && i < count; ++i) {
    orklib_update_sttr_offset(call.handle, call.instance, to.element(i), to.distance(i));
  }
  const uint64_t made = initialize_elements(call, to, from.count, field);
  if (made < count) {
    store_count(call, object, field, made);
    close_ranks(call, to, made, field);
  }
  if (tracking<Function::array_set_record, 1>(call.handle, field) != Tracking::on) {
    drop_element_states(call, object, field);
    return made == count;
  }
  if (!tracked_as_asked<Function::array_set_record, 1>(call, object, field)) return false;
  if (!replace_element_states(call, state_entry(call, object, field), count, from.count)) {
    call.fail(ENOMEM);
    return false;
  }
  return made == count;
}

}  // namespace

void array_set_record(const Call& call, void* object, uint32_t index, const void* from,
                      FillElement fill, const FieldRow& field) {
  if (!begin_write(call, object, field)) return;
  if (!tracked_as_asked<Function::array_set_record, 0>(call, object, field)) return;
  if (mode_of(call.handle) == Tracking::on && !has_flag(from, OBJ_STATE_TRACKED)) {
    call.fail(EINVAL);
    return trace::raise<Function::array_set_record, Form::value_not_tracked>(field);
  }
  if (index >= element_count(object, field) && !grow(call, object, index, field)) return;
  if (from == nullptr) return;
  void* element = element_at(object, field, index);
  contain(call, element, object);
  fill(call, element, from, child_record(field));
  if (!tracked_as_asked<Function::array_set_record, 2>(call, object, field)) return;
  if (mode_of(call.handle) == Tracking::on) touch_element(call, object, index, field);
}

}  // namespace frame
