// A received message with its records.
#pragma once

#include "tools/look/object.h"

namespace look {

struct Message {
  // msg keeps its records and has to outlive this.
  Message(ork_handle* handle, const wayfind_message& schema, void* msg);

  Object record(unsigned slot) const { return {type->records[slot], at[slot]}; }

  const wayfind_message* type;
  void* msg;
  const uint8_t* at[2] = {};  // its records, in wire order
};

// The member of the bundle, or null.
const wayfind_member* member_of(const wayfind_bundle& bundle, const wayfind_message& message);

}  // namespace look
