// Memory outside a handle's budget.
#include <cstdlib>

#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"

extern "C" {

ORK_EXPORT void orklib_get_handle_ws(struct ork_handle* handle, uint8_t** ws, int32_t* ws_len) {
  const ork::Runtime& runtime = ork::runtime(handle);
  *ws = runtime.workspace.get();
  *ws_len = runtime.workspace_size;
}

ORK_EXPORT void* orklib_malloc(void*, uint32_t, size_t size) { return std::malloc(size); }

ORK_EXPORT void orklib_free(void*, uint32_t, void* ptr) { std::free(ptr); }

}  // extern "C"
