// Preloaded into the command it stands in front of the runtime and refuses what a variable of the
// environment tells, for want of memory: WAYFIND_REFUSED_MESSAGE one message of a bundle, counted
// from 1 over all that the process sends, WAYFIND_REFUSED_LIST one text of a type list. Others tell
// it to count: WAYFIND_COUNTED_TAG names an element, or is "message" for the text of any, and how
// often one was begun, a text at both its ends, is written to the file WAYFIND_COUNT at the end.
#include <dlfcn.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ork/orklib.h"
#include "ork/platform.h"

namespace {

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// Whether this is the call whose number the variable tells.
bool is_refused(const char* variable, unsigned long& seen) {
  const char* const refused = std::getenv(variable);
  return refused != nullptr && ++seen == std::strtoul(refused, nullptr, 10);
}

// Of elements with the name that is looked for.
struct Count {
  const char* tag = std::getenv("WAYFIND_COUNTED_TAG");
  unsigned long begun = 0;
  ~Count() {
    const char* const path = std::getenv("WAYFIND_COUNT");
    std::FILE* const file = path != nullptr ? std::fopen(path, "we") : nullptr;
    if (file == nullptr) return;
    std::fprintf(file, "%lu", begun);
    std::fclose(file);
  }
};
Count count;

}  // namespace

extern "C" uint32_t start_tag(ork_handle* handle, uint32_t instance, char* buffer, const char* tag,
                              int32_t remaining, uint8_t state, uint32_t* err) {
  if (count.tag != nullptr && std::strcmp(tag, count.tag) == 0) ++count.begun;
  static const auto write = next<decltype(start_tag)>("start_tag");
  return write(handle, instance, buffer, tag, remaining, state, err);
}

// The text of a message begins and ends with one of no blanks.
extern "C" uint32_t ork_print_space(ork_handle* handle, uint32_t instance, char* buffer,
                                    uint32_t indent, int32_t remaining, uint32_t* err) {
  if (count.tag != nullptr && std::strcmp(count.tag, "message") == 0 && indent == 0) ++count.begun;
  static const auto write = next<decltype(ork_print_space)>("ork_print_space");
  return write(handle, instance, buffer, indent, remaining, err);
}

extern "C" size_t ork_type_list_text(const ork_type_list* list, char* buffer, size_t size) {
  static unsigned long seen = 0;
  if (is_refused("WAYFIND_REFUSED_LIST", seen)) return 0;
  return next<decltype(ork_type_list_text)>("ork_type_list_text")(list, buffer, size);
}

extern "C" void bundle_message_validate_add(ork_handle* handle, uint32_t instance,
                                            const uint8_t* luid, const char* name, uint32_t* err) {
  static unsigned long seen = 0;
  if (is_refused("WAYFIND_REFUSED_MESSAGE", seen)) {
    *err = ENOMEM;
    ork_store_err(handle, ENOMEM);
    return;
  }
  next<decltype(bundle_message_validate_add)>("bundle_message_validate_add")(handle, instance, luid,
                                                                             name, err);
}
