#include "tools/common/release.h"

#include "tools/common/failure.h"
#include "tools/common/file.h"

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
  return parse_release(read_file_or_input(path, largest_release), path);
}

TypeList parse_release(const std::string& text, const std::string& origin) {
  uint32_t err = 0;
  char reason[256] = "";
  ork_type_list* list = ork_type_list_parse(text.data(), text.size(), &err, reason, sizeof reason);
  return checked(list, err, origin, reason);
}

std::string text_of(const ork_type_list& list) {
  const bool has_text = ork_type_list_size(&list) != 0;
  std::string text(ork_type_list_text(&list, nullptr, 0), '\0');
  // Without memory the length is 0, be it asked for or be the text written.
  const size_t written = ork_type_list_text(&list, text.data(), text.size() + 1);
  if ((text.empty() && has_text) || written != text.size())
    throw Failure("no memory for the list of this release's types");
  return text;
}

}  // namespace wayfind
