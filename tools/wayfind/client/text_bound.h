// How long the text or XML of a message may be.
#pragma once

#include <cstddef>

#include "tools/schema/wayfind_schema.h"

namespace wayfind {

// What stands in a message once has a longest text; the elements of its arrays have a longest text
// for each byte that they take on the wire. Both follow from the schema.
class TextBound {
 public:
  TextBound(const wayfind_message& message, bool xml);

  // wire_length: of the message. No text of it is longer.
  size_t of(size_t wire_length) const { return fixed_ + per_byte_ * wire_length; }

 private:
  void add_record(const wayfind_record& record, size_t depth, bool in_array);
  void add_array(const wayfind_field& field, size_t depth);
  size_t fields_text(const wayfind_record& record, unsigned variant, size_t depth) const;
  size_t field_text(const wayfind_field& field, size_t depth) const;
  size_t line(size_t name, size_t value, size_t depth) const;

  bool xml_;
  size_t fixed_ = 0;
  size_t per_byte_ = 1;
};

}  // namespace wayfind
