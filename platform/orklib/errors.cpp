#include <cerrno>

#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {

void fail(ork_handle* handle, uint32_t* err, uint32_t number) {
  *err = number;
  ork_store_err(handle, number);
}

}  // namespace ork

extern "C" {

ORK_EXPORT void ork_store_err(struct ork_handle* handle, uint32_t number) {
  ork::runtime(handle).last_error = number;
  if (handle->cr_active != 0 && handle->cr_error == 0) {
    handle->cr_error = number;
  }
}

// A lowered record goes out only while the slot stays 0; a refused message must never be silent.
ORK_EXPORT void ork_store_epoch_err(struct ork_handle* handle, uint32_t number, uint32_t* err) {
  ork::Runtime& runtime = ork::runtime(handle);
  runtime.last_error = number;
  const bool written = runtime.strict_epoch || number != EIDRM;
  if (written && err != nullptr && *err == 0) {
    *err = number;
  }
}

ORK_EXPORT void ork_clear_last_error(struct ork_handle* handle) {
  ork::runtime(handle).last_error = 0;
}

ORK_EXPORT uint32_t ork_handle_last_error(const struct ork_handle* handle) {
  return ork::runtime(handle).last_error;
}

}  // extern "C"
