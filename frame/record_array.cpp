#include "frame/record_array.h"

#include "frame/array_storage.h"

namespace frame {

void array_set_record(const Call& call, void* object, uint32_t index, const void* from,
                      FillElement fill, const FieldRow& field) {
  if (!begin_write(call, object, field)) return;
  if (!tracked_as_asked<Function::array_set_record, 0>(call, object, field)) return;
  if (mode_of(call.handle) == Tracking::on && !has_flag(from, OBJ_STATE_TRACKED)) {
    call.fail(EINVAL);
    return trace::raise<Function::array_set_record, Form::value_not_tracked>(field);
  }
  if (index >= usable_count(object, field) && !grow_records(call, object, index, field)) return;
  if (from == nullptr) return;  // the caller only wanted the array to grow
  void* element = element_at(object, field, index);
  contain(call, element, object);
  fill(call, element, from, child_record(field));
  if (!tracked_as_asked<Function::array_set_record, 2>(call, object, field)) return;
  if (mode_of(call.handle) == Tracking::on) touch_element(call, object, index, field);
}

}  // namespace frame
