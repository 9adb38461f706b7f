// Message objects: a header, a message header and one or two records, which the message owns until
// they are detached.
#pragma once

#include "encoders/length.h"
#include "encoders/marshal.h"
#include "encoders/text.h"
#include "encoders/unmarshal.h"
#include "frame/typeinfo.h"
#include "model/message_rows.h"
#include "ork/bundle.h"

namespace messages {

using encoders::TextBuffer;
using encoders::Writer;
using frame::error_text;
using frame::Call;
using frame::DetachedCall;
using frame::Form;
using frame::Function;
using frame::RecordRow;
using model::CarriedRow;
using std::int32_t;
using std::size_t;
using std::uint32_t;
using std::uint64_t;
using std::uint8_t;

// Offsets in the object. Messages have no fields or state bytes; the records that they point to do.
inline constexpr size_t at_message_header = 12;
inline constexpr size_t at_records = 32;
constexpr size_t object_size(const model::MessageRow& row) {
  return at_records + sizeof(void*) * row.records;
}

inline constexpr uint32_t header_length = ORK_MESSAGE_HEADER_WIRE_SIZE;
inline constexpr uint32_t frame_length = header_length + ORK_LUID_SIZE;

// The wire functions of one carried record, which are unrolled for its type.
struct RecordWire {
  uint32_t (*length)(ork_handle*, uint32_t, const void*);
  uint32_t (*marshal)(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);
  uint32_t (*unmarshal)(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t, uint32_t*);
};
template <const model::Record& R>
constexpr RecordWire record_wire() {
  return {encoders::length<R>, encoders::marshal<R>, encoders::unmarshal<R>};
}

// What the engines know of one message.
struct Message {
  const model::MessageRow& row;
  const uint8_t* luid;
  const char* bundle_name;  // "message " and the message's name
  RecordWire wire[2];
};

inline const RecordRow& record_of(const CarriedRow& carried) {
  return model::record_rows[carried.record];
}
inline const CarriedRow& carried(const Message& message, size_t slot) {
  return model::carried_rows[message.row.carried + slot];
}

const ork_type_info* descriptor(const model::MessageRow& row);
inline const char* name_of(const Message& message) { return descriptor(message.row)->name; }
inline const char* name_of(const CarriedRow& carried) {
  return frame::descriptor(record_of(carried))->name;
}

inline void* record_in(const void* object, const CarriedRow& carried) {
  return frame::load<void*>(frame::byte_at(object, at_records + sizeof(void*) * carried.slot));
}
inline void put_record(void* object, const CarriedRow& carried, void* record) {
  frame::put(frame::byte_at(object, at_records + sizeof(void*) * carried.slot), record);
}
inline ork_message_header* header_of(void* object) {
  return reinterpret_cast<ork_message_header*>(frame::byte_at(object, at_message_header));
}
// The message header of a new message, and of every control message.
ork_message_header fresh_header();

// Objects.
void* create(ork_handle* handle, uint32_t instance, const Message& message);
void* create_cr(ork_handle* handle, const Message& message);
void* create_shallow(ork_handle* handle, uint32_t instance, const Message& message);
void destroy(ork_handle* handle, uint32_t instance, void* object, const Message& message);
uint32_t length(ork_handle* handle, uint32_t instance, const void* object, const Message& message);
uint32_t length_cr(ork_handle* handle, const void* object, const Message& message);
uint32_t is_valid_cr(ork_handle* handle, const Message& message);

// The records in them.
void* get(const void* object, const uint32_t* err, const CarriedRow& carried);
void* get_detach(void* object, const uint32_t* err, const CarriedRow& carried);
void set(void* object, void* record, const uint32_t* err, const CarriedRow& carried);
void free_and_set(ork_handle* handle, uint32_t instance, void* object, void* record,
                  const uint32_t* err, const CarriedRow& carried);

}  // namespace messages
