#include "frame/text_field.h"

#include "frame/state.h"

namespace frame {

void text_get(ork_handle* handle, uint32_t instance, const void* object, char* to, uint32_t size,
              uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.start()) return;
  if (size == 0) return call.fail(EINVAL);
  if (!gate(call, object, field)) return;
  uint32_t length = field.width;
  if (size <= length) {
    call.fail(ENOSPC);
    length = size - 1;
  }
  strncpy(to, static_cast<const char*>(field_of(object, field)), length);
  to[length] = '\0';
}

// The end byte is written last, after the mark, and unannounced. A text of full width has none.
void text_set(ork_handle* handle, uint32_t instance, void* object, const char* from,
              uint32_t length, uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!begin_write(call, object, field)) return;
  if (length > field.width) return call.fail(EINVAL);
  auto* text = static_cast<char*>(field_of(object, field));
  announce(call, text, length, object);
  strncpy(text, from, length);
  if (!mark<Function::set>(call, object, field)) return;
  if (length < field.width) text[length] = '\0';
}

}  // namespace frame
