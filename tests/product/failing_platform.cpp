// Preloaded into an agent it stands in front of the runtime and refuses one message of a bundle for
// want of memory: the one whose number WAYFIND_REFUSED_MESSAGE tells, counted from 1 over all that
// the process sends.
#include <dlfcn.h>

#include <cerrno>
#include <cstdlib>

#include "ork/orklib.h"

extern "C" void bundle_message_validate_add(ork_handle* handle, uint32_t instance,
                                            const uint8_t* luid, const char* name, uint32_t* err) {
  static unsigned long seen = 0;
  const char* refused = std::getenv("WAYFIND_REFUSED_MESSAGE");
  if (refused != nullptr && ++seen == std::strtoul(refused, nullptr, 10)) {
    *err = ENOMEM;
    ork_store_err(handle, ENOMEM);
    return;
  }
  static const auto next = reinterpret_cast<decltype(&bundle_message_validate_add)>(
      dlsym(RTLD_NEXT, "bundle_message_validate_add"));
  next(handle, instance, luid, name, err);
}
