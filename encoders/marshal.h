// Record to wire image. Allocates nothing. Bytes are written once, front to back, except for the
// jump, which is known last.
//
//   variant   1 byte, signed
//   flags     1 byte: whether ra data and state bytes are in the image
//   ra data   only with its flag; always zero
//   jump      4 bytes: the distance from here to the end, for readers that know less
//   fields    in definition order, as far as the variant reaches
//
// With tracking on, each field is followed by its state byte. A counter has none; its array has one
// for the whole and one per element, unless it is empty. A record inside a record is a whole image.
//
// A field that does not fit sets *err and advances by nothing; the fields after it are tried all
// the same.
#pragma once

#include "encoders/cursor.h"
#include "encoders/primitives.h"
#include "encoders/small_wire.h"

namespace encoders {

// The flag bits that are sent; others say where this process keeps the object.
inline constexpr uint8_t wire_flags = OBJ_STATE_TRACKED | OBJ_RA_DATA;

template <const Record& R>
uint32_t marshal_body(const Call& call, uint8_t* buffer, const void* object, int32_t length,
                      bool check_domain);

// The variant to send: lowered to what the peer knows and to what this library knows. With
// `check_domain`, EIDRM (43) when the peer does not know the object's.
int wire_variant(const Call& call, const void* object, bool check_domain, const RecordRow& record);

void marshal_variant(const Call& call, Writer& out, int variant);
// The rest of the fixed bytes before the fields. Returns the position of the jump.
int32_t marshal_base(const Call& call, Writer& out, uint8_t flags, bool tracked);
// Writes the jump, which is the distance from its own position to the end of the record.
void marshal_jump(const Call& call, Writer& out, int32_t base);

// The state block to send from, or null when the record has none.
const uint8_t* states_to_send(const Call& call, const void* object, const RecordRow& record);

// The state bytes that follow an array: one for the whole, one per element.
void marshal_array_states(Writer& out, const uint8_t* states, uint32_t count,
                          const FieldRow& field);

// All characters of a fixed string, one by one, those past its end byte too.
inline void marshal_text(const Call& call, Writer& out, const char* text, size_t size) {
  out.put_each(text, size, [&](uint8_t* to, const char* character, int32_t room) {
    return char_marshal(call.handle, call.instance, to, character, room, call.err);
  });
}

// Bytes that there is no room for are left out, with EMSGSIZE (90).
void marshal_byte_array(const Call& call, Writer& out, const void* block, uint32_t count);

template <const Record& R, size_t N>
[[gnu::always_inline]] inline void marshal_array(const Call& call, Writer& out, const void* object,
                                                 const uint8_t* states, bool tracked) {
  constexpr const FieldRow& field = model::field_at<R, N>;
  const uint32_t count = frame::usable_count(object, field);
  if (count == 0) return;
  if constexpr (field.kind == Kind::u_int8) {
    marshal_byte_array(call, out, frame::block_of(object, field), count);
  } else {
    for (uint32_t i = 0; i < count; ++i) {
      const void* element = frame::element_at(object, field, i);
      if constexpr (field.kind == Kind::record) {
        out.advance(
            marshal_body<*model::records[field.type]>(call, out.here(), element, out.room(), true));
      } else {
        out.advance(Coded<field.kind>::marshal(call, out.here(), element, out.room()));
      }
    }
  }
  if (tracked) marshal_array_states(out, states, count, field);
}

template <const Record& R, size_t N>
[[gnu::always_inline]] inline void marshal_field(const Call& call, Writer& out,
                                                 const void* object) {
  constexpr const FieldRow& field = model::field_at<R, N>;
  const void* at = frame::field_of(object, field);
  if constexpr (field.kind == Kind::character) {
    marshal_text(call, out, static_cast<const char*>(at), field.width);
  } else if constexpr (field.kind == Kind::record) {
    out.advance(marshal_body<*model::records[field.type]>(call, out.here(), at, out.room(), true));
  } else if constexpr (field.kind == Kind::enumeration) {
    out.advance(enum_marshal(call, out.here(), at, out.room()));
  } else if constexpr (field.kind == Kind::flag_set) {
    out.advance(flag_set_marshal(call, out.here(), at, out.room()));
  } else {
    out.advance(Coded<field.kind>::marshal(call, out.here(), at, out.room()));
  }
}

template <const Record& R>
uint32_t marshal_body(const Call& call, uint8_t* buffer, const void* object, int32_t length,
                      bool check_domain) {
  constexpr const RecordRow& record = model::row<R>;
  if (!call.start()) return 0;
  if (length < 1) {
    call.fail(EMSGSIZE);
    return 0;
  }
  const int variant = wire_variant(call, object, check_domain, record);
  Writer out(buffer, length);
  marshal_variant(call, out, variant);
  const uint8_t flags = ork_get_instance_obj_flag(object, 1, 0);
  const bool tracked = frame::checked_mode<Function::marshal>(call.handle, record) == Tracking::on;
  const uint8_t* states = tracked ? states_to_send(call, object, record) : nullptr;
  const int32_t jump_base = marshal_base(call, out, flags, tracked);

  walk<R>(
      variant, [&]<size_t N>() __attribute__((always_inline)) {
        constexpr const FieldRow& field = model::field_at<R, N>;
        constexpr Shape shape = shape_of(field);
        if constexpr (shape == Shape::counter) {
          const auto count = static_cast<typename Coded<field.kind>::Storage>(
              frame::usable_count(object, model::field_at<R, N + 1>));
          out.advance(Coded<field.kind>::marshal(call, out.here(), &count, out.room()));
        } else if constexpr (shape == Shape::array) {
          marshal_array<R, N>(call, out, object, states, tracked);
        } else {
          static_assert(shape == Shape::single);
          marshal_field<R, N>(call, out, object);
          if (tracked) out.put_state(states != nullptr ? states[field.state] : uint8_t{0});
        }
        return true;
      });
  marshal_jump(call, out, jump_base);
  return out.produced();
}

template <const Record& R>
uint32_t marshal(ork_handle* handle, uint32_t instance, uint8_t* buffer, const void* object,
                 int32_t length, uint32_t* err) {
  return marshal_body<R>({handle, instance, err}, buffer, object, length, true);
}
// Asks the domain, but ignores the answer for the record itself; embedded records are lowered.
template <const Record& R>
uint32_t marshal_for_clone(ork_handle* handle, uint32_t instance, uint8_t* buffer,
                           const void* object, int32_t length, uint32_t* err) {
  return marshal_body<R>({handle, instance, err}, buffer, object, length, false);
}

}  // namespace encoders
