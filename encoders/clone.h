// Deep copies: a record is marshalled to a scratch buffer and unmarshalled from it.
#pragma once

#include "encoders/marshal.h"
#include "encoders/unmarshal.h"

namespace encoders {

// The scratch buffer.
struct Workspace {
  uint8_t* bytes;
  int32_t length;
};

// The two wire functions of a record.
// marshal_for_clone does not lower the record to what a peer knows.
struct WireForm {
  uint32_t (*marshal_for_clone)(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);
  uint32_t (*unmarshal)(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t, uint32_t*);
};
template <const Record& R>
inline constexpr WireForm wire_form{marshal_for_clone<R>, unmarshal<R>};

void clone_internal(const Call& call, const void* from, void** slot, Workspace ws,
                    const RecordRow& record, WireForm form);
void clone(const Call& call, const void* from, void** slot, Workspace ws, const RecordRow& record,
           WireForm form);
void* clone_cr(ork_handle* handle, const void* from, const RecordRow& record, WireForm form);

// Clones into an element that exists already. After a failure the element is initialized again: it
// lies inside a block, so it cannot be freed by itself.
void clone_element(const Call& call, void* element, const void* from, const RecordRow& record,
                   WireForm form);
template <const Record& R>
void clone_into_element(const Call& call, void* element, const void* from,
                        const RecordRow& record) {
  clone_element(call, element, from, record, wire_form<R>);
}

}  // namespace encoders
