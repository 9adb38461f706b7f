// The header that every object begins with, and what follows from it: variant, layout, state block,
// tracking mode.
//
//    0  type          8 bytes, the descriptor
//    8  variant       signed; the fields that the object has now
//    9  variant_cap   the newest variant that its storage was allocated for: the layout
//   10  flags         of these, only "tracked" and "has ra data" are sent to peers
//   11  fields        in definition order, aligned; then some room for later variants
//
// With tracking on, the state block follows the body. Where it lies elsewhere, as for records
// inside others, the runtime keeps its offset, and a flag says so.
#pragma once

#include "frame/call.h"
#include "frame/trace.h"
#include "model/rows.h"

namespace frame {

using model::FieldRow;
using model::Kind;
using model::Layout;
using model::RecordRow;
using model::SmallRow;
using trace::Form;
using trace::Function;

// Offsets in the header.
inline constexpr size_t at_variant = 8;
inline constexpr size_t at_variant_cap = 9;
inline constexpr size_t at_flags = 10;
inline constexpr size_t at_value = 12;      // of an enum
inline constexpr size_t at_flag_bits = 11;  // of the flag set

inline uint8_t flags_of(const void* object) { return *byte_at(object, at_flags); }
inline bool has_flag(const void* object, uint8_t flag) { return (flags_of(object) & flag) != 0; }
inline int8_t variant_cap_of(const void* object) {
  return static_cast<int8_t>(*byte_at(object, at_variant_cap));
}
inline int8_t variant_of(const void* object) {
  return static_cast<int8_t>(ork_get_instance_variant(object, 1, 0));
}

constexpr int cap(int variant, int newest) { return variant > newest ? newest : variant; }

// The layout that the object's storage was allocated for. A variant_cap that names no older layout,
// a negative one included, means the newest.
inline const Layout& layout_of(const RecordRow& record, const void* object) {
  const uint8_t named = *byte_at(object, at_variant_cap);
  return named < record.newest() ? record.layouts[named] : record.newest_layout();
}

// The fields that the object's storage was allocated for; these have state bytes.
inline model::FieldSpan fields_in_layout(const RecordRow& record, const void* object) {
  const FieldRow* first = model::fields_of(record).begin();
  return {first, first + layout_of(record, object).fields};
}
// The fields that lie inside the object's storage: those of its layout, and later ones for which
// the end of the body happens to have room. An object that is upgraded in place gets to use them.
inline model::FieldSpan fields_in_body(const RecordRow& record, const void* object) {
  const FieldRow* first = model::fields_of(record).begin();
  return {first, first + layout_of(record, object).held};
}

inline void* field_of(void* object, const FieldRow& field) { return byte_at(object, field.offset); }
inline const void* field_of(const void* object, const FieldRow& field) {
  return byte_at(object, field.offset);
}

inline const RecordRow& owner(const FieldRow& field) { return model::record_rows[field.record]; }
inline const RecordRow& child_record(const FieldRow& field) {
  return model::record_rows[field.type];
}
inline const SmallRow& small_type(const FieldRow& field) { return model::small_rows[field.type]; }
inline bool is_embedded_record(const FieldRow& field) {
  return field.cls == model::Class::object && field.kind == Kind::record;
}

enum class Tracking : uint8_t { absent, off, on, corrupted };

inline Tracking mode_of(const ork_handle* handle) {
  if (handle->sttr_info == nullptr) return Tracking::absent;
  switch (handle->sttr_info->sttr_mode) {
    case ORK_STTR_ON: return Tracking::on;
    case ORK_STTR_OFF: return Tracking::off;
    default: return Tracking::corrupted;
  }
}
// Reads the mode word, which may change between two decisions of one operation. A value other than
// the two legal ones ends the process.
template <Function F, size_t Nth = 0, class Row>
Tracking checked_mode(const ork_handle* handle, const Row& row) {
  const Tracking mode = mode_of(handle);
  if (mode == Tracking::corrupted) trace::fatal<F, Form::corrupted_handle, Nth>(row);
  return mode;
}

// The state block at the offset that is registered with the runtime.
inline uint8_t* mapped_states(const Call& call, void* object) {
  return static_cast<uint8_t*>(object) +
         static_cast<intptr_t>(orklib_get_sttr_offset(call.handle, call.instance, object));
}
// The state block: at the registered offset if there is one, else directly after the body.
inline uint8_t* state_block(const Call& call, void* object, const Layout& layout) {
  return has_flag(object, OBJ_STTR_OFFSET) ? mapped_states(call, object)
                                           : byte_at(object, layout.body);
}
inline uint8_t* state_block(const Call& call, void* object, const RecordRow& record) {
  return state_block(call, object, layout_of(record, object));
}

// The end of every object, once what it holds is gone: frees the block that its first word owns, if
// any, then the object itself.
inline void free_object(const Call& call, void* object) {
  const uint64_t word = load<uint64_t>(object);
  if (has_flag(object, OBJ_OWNS_SLOT_BLOCK) && word != 0)
    release(call, reinterpret_cast<void*>(word));
  store<uint64_t>(call, object, 0, nullptr);
  release(call, object);
}

// Asks the runtime to upgrade the object in place. Every write does so before its gate.
inline uint32_t adjust(const Call& call, void* object, int newest) {
  const ork_type_info* type = object != nullptr ? ork_get_manifested_type_info(object) : nullptr;
  return orklib_adjust_variant(call.handle, call.instance, object, type, newest, call.err);
}

// False, with EIDRM (43), when the object's variant lacks the field.
inline bool gate(const Call& call, const void* object, const FieldRow& field) {
  const uint32_t enumeration = field.kind == Kind::enumeration ? 1 : 0;
  if (static_cast<int8_t>(ork_get_instance_variant(object, 1, enumeration)) >= field.variant)
    return true;
  call.lacks();
  return false;
}
inline bool upgrade_and_gate(const Call& call, void* object, const FieldRow& field) {
  adjust(call, object, owner(field).newest());
  return gate(call, object, field);
}
// The first steps of every write to a field.
inline bool begin_write(const Call& call, void* object, const FieldRow& field) {
  return call.start() && upgrade_and_gate(call, object, field);
}

}  // namespace frame
