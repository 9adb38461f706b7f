#include "tools/common/release.h"

#include "tools/common/failure.h"

namespace wayfind {
namespace {

TypeList checked(ork_type_list* list, uint32_t err, const std::string& origin, const char* reason) {
  TypeList owned(list);
  if (err != 0) throw Failure(origin + ": " + (*reason != 0 ? reason : words_for(err)));
  return owned;
}

}  // namespace

TypeList newest_release() {
  uint32_t err = 0;
  ork_type_list* list = ork_type_list_from_modules(&err);
  return checked(list, err, "types of this release", "");
}

TypeList read_release(const std::string& path) {
  uint32_t err = 0;
  char reason[256] = "";
  ork_type_list* list = ork_type_list_read(path.c_str(), &err, reason, sizeof reason);
  return checked(list, err, path, reason);
}

TypeList parse_release(const std::string& text, const std::string& origin) {
  uint32_t err = 0;
  char reason[256] = "";
  ork_type_list* list = ork_type_list_parse(text.data(), text.size(), &err, reason, sizeof reason);
  return checked(list, err, origin, reason);
}

std::string text_of(const ork_type_list& list) {
  std::string text(ork_type_list_text(&list, nullptr, 0), '\0');
  ork_type_list_text(&list, text.data(), text.size() + 1);
  return text;
}

}  // namespace wayfind
