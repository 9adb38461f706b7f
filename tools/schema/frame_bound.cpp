#include "tools/schema/frame_bound.h"

#include <algorithm>
#include <span>

#include "tools/schema/wayfind_schema.h"

namespace wayfind {
namespace {

// The image of a record at least, that of one with a negative variant: variant, flags, jump.
constexpr size_t smallest_image = 6;

// On the wire; arrays may be empty.
size_t smallest_width(const wayfind_field& field) {
  switch (field.kind) {
    case WAYFIND_U_INT8:
    case WAYFIND_U_INT16:
    case WAYFIND_U_INT32:
    case WAYFIND_U_INT64: return field.width;
    case WAYFIND_ORK_BOOLEAN: return ork_boolean_len(nullptr, 0, nullptr);
    case WAYFIND_LINK_TYPE: return link_type_len(nullptr, 0, nullptr);
    case WAYFIND_IP_ADDRESS: return ip_address_len(nullptr, 0, nullptr);
    case WAYFIND_CHAR: return field.width;
    case WAYFIND_ENUM: return 5;
    case WAYFIND_FLAG_SET:
    case WAYFIND_RECORD: return smallest_image;
  }
  return 0;
}

size_t rounded_up(size_t dividend, size_t divisor) { return (dividend + divisor - 1) / divisor; }

std::span<const wayfind_field> fields_of(const wayfind_record& record) {
  return {record.fields, record.field_count};
}

bool is_array(const wayfind_field& field) {
  return field.cls == WAYFIND_VALUE_ARRAY || field.cls == WAYFIND_RECORD_ARRAY;
}

// The image of a record at least that has fields at all, and so may have arrays.
size_t smallest_image_with_fields(const wayfind_record& record) {
  size_t bytes = smallest_image;
  for (const wayfind_field& field : fields_of(record)) {
    if (field.variant == 0 && !is_array(field)) bytes += smallest_width(field);
  }
  return bytes;
}

class Costs {
 public:
  explicit Costs(ork_tracking tracking) : tracking_(tracking) {}

  // A record with its state bytes.
  size_t size_of(const wayfind_record& record) const {
    const wayfind_layout& newest = record.layouts[record.variants - 1];
    return newest.body + (tracks() ? newest.state : size_t{0});
  }

  size_t block(size_t size) const { return ork_block_cost(size, tracking_); }

  // The heads of the blocks that the arrays of a record begin, those of the records inside it too.
  size_t array_heads(const wayfind_record& record) const {
    size_t heads = 0;
    for (const wayfind_field& field : fields_of(record)) {
      if (is_array(field)) heads += (tracks() ? 2 : 1) * head();
      if (field.cls == WAYFIND_OBJECT && field.record != nullptr)
        heads += array_heads(*field.record);
    }
    return heads;
  }

  // What each byte of an array's elements in a frame may cost at most.
  size_t factor(const wayfind_field& field) const {
    const size_t state = tracks() ? share_of_block(1) : 0;
    if (field.cls == WAYFIND_VALUE_ARRAY)
      return rounded_up(share_of_block(field.width) + state, field.width);
    const wayfind_record& record = *field.record;
    const size_t element = share_of_block(size_of(record)) + state;
    return std::max(rounded_up(element, smallest_image),
                    rounded_up(element + array_heads(record), smallest_image_with_fields(record)));
  }

 private:
  bool tracks() const { return tracking_ == ORK_TRACKING_ON; }

  // What a block costs beside its size: a cost is rounded up, by less than a largest piece.
  size_t head() const { return block(0) + alignof(std::max_align_t); }

  // What so many bytes add to the cost of a block that holds many of their kind.
  size_t share_of_block(size_t bytes) const {
    constexpr size_t many = 4800;
    return rounded_up(bytes * (block(many) - block(0)), many);
  }

  ork_tracking tracking_;
};

size_t base_of(const wayfind_message& message, const Costs& costs) {
  size_t bytes = costs.block(message.type->varinfo->entries[0].used_length);
  for (unsigned i = 0; i < message.record_count; ++i)
    bytes +=
        costs.block(costs.size_of(*message.records[i])) + costs.array_heads(*message.records[i]);
  return bytes;
}

}  // namespace

FrameBound frame_bound(ork_tracking tracking) {
  const Costs costs(tracking);
  FrameBound bound{0, 0};
  for (const wayfind_message& message : std::span(wayfind_messages, wayfind_message_count))
    bound.base = std::max(bound.base, base_of(message, costs));
  for (const wayfind_record& record : std::span(wayfind_records, wayfind_record_count)) {
    for (const wayfind_field& field : fields_of(record)) {
      if (is_array(field)) bound.factor = std::max(bound.factor, costs.factor(field));
    }
  }
  return bound;
}

}  // namespace wayfind
