#include "type_list.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "guard.h"
#include "ork/orklib.h"
#include "ork/platform.h"
#include "support/export.h"

bool ork_type_list::add(std::string_view name, const ork::Luid& luid, uint32_t variants) {
  if (!variants_.emplace(luid, variants).second) {
    return false;
  }
  entries.push_back({std::string(name), luid, variants});
  return true;
}

uint32_t ork_type_list::variants(const ork::Luid& luid) const {
  const auto found = variants_.find(luid);
  return found != variants_.end() ? found->second : 0;
}

namespace ork {
namespace {

// A signed byte holds a variant, so more of them cannot be told apart.
constexpr uint32_t max_variants = 127;

// Far more than any release has types and messages.
constexpr uint32_t max_lines = 4096;

std::string_view bounded_text(const char* text, size_t size) { return {text, strnlen(text, size)}; }

// Splits off the next word; blanks and tabs separate.
std::string_view next_word(std::string_view& line) {
  const size_t begin = std::min(line.find_first_not_of(" \t\r"), line.size());
  const size_t end = std::min(line.find_first_of(" \t\r", begin), line.size());
  const std::string_view word = line.substr(begin, end - begin);
  line.remove_prefix(end);
  return word;
}

bool parse_luid(std::string_view digits, Luid& luid) {
  if (digits.size() != 2 * luid.size()) {
    return false;
  }
  for (size_t i = 0; i < luid.size(); ++i) {
    const char* pair = digits.data() + 2 * i;
    const auto result = std::from_chars(pair, pair + 2, luid[i], 16);
    if (result.ec != std::errc() || result.ptr != pair + 2) {
      return false;
    }
  }
  return true;
}

// Gives null, or what is wrong with the line.
const char* parse_line(std::string_view line, ork_type_list& list) {
  const std::string_view name = next_word(line);
  if (name.empty() || name.front() == '#') {
    return nullptr;
  }
  Luid luid;
  if (!parse_luid(next_word(line), luid)) {
    return "the second word is no LUID of 32 hexadecimal digits";
  }
  const std::string_view number = next_word(line);
  uint32_t variants = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), variants);
  if (result.ec != std::errc() || result.ptr != number.data() + number.size() || variants < 1 ||
      variants > max_variants) {
    return "the third word is no number of variants from 1 to 127";
  }
  if (!next_word(line).empty()) {
    return "more than three words";
  }
  return list.add(name, luid, variants) ? nullptr : "the LUID is listed twice";
}

std::unique_ptr<ork_type_list> parse(std::string_view text, char* err_text, uint32_t err_text_len) {
  auto list = std::make_unique<ork_type_list>();
  for (uint32_t number = 1; !text.empty(); ++number) {
    const size_t end = std::min(text.find('\n'), text.size());
    const char* const reason =
        number > max_lines ? "more than 4096 lines" : parse_line(text.substr(0, end), *list);
    if (reason != nullptr) {
      if (err_text != nullptr) {
        std::snprintf(err_text, err_text_len, "line %u: %s", number, reason);
      }
      return nullptr;
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return list;
}

std::string text_of(const ork_type_list& list) {
  std::string text;
  for (const auto& entry : list.entries) {
    char line[ORK_LUID_SIZE * 2 + 16];
    char* at = line;
    for (const uint8_t byte : entry.luid) {
      at += std::snprintf(at, 3, "%02x", byte);
    }
    std::snprintf(at, 8, " %u\n", entry.variants);
    text.append(entry.name).append(" ").append(line);
  }
  return text;
}

}  // namespace

ork_type_list types_of_modules() {
  ork_type_list list;
  for (const ork_module* module = ork_module_tot_root.head; module != nullptr;
       module = module->next) {
    for (const ork_type_info* const* at = module->descriptors; *at != nullptr; ++at) {
      const ork_type_info& type = **at;
      const int n_variants = type.varinfo != nullptr ? type.varinfo->n_variants : 0;
      if (n_variants > 0) {
        list.add(bounded_text(type.name, sizeof type.name), luid_at(type.luid),
                 static_cast<uint32_t>(n_variants));
      }
    }
  }
  return list;
}

ork_type_list common_types(const ork_type_list& a, const ork_type_list& b) {
  ork_type_list common;
  for (const auto& entry : a.entries) {
    if (const uint32_t other = b.variants(entry.luid); other != 0) {
      common.add(entry.name, entry.luid, std::min(entry.variants, other));
    }
  }
  return common;
}

}  // namespace ork

extern "C" {

ORK_EXPORT struct ork_type_list* ork_type_list_from_modules(uint32_t* err) {
  return ork::guarded(err, [] { return new ork_type_list(ork::types_of_modules()); });
}

ORK_EXPORT struct ork_type_list* ork_type_list_parse(const char* text, size_t length, uint32_t* err,
                                                     char* err_text, uint32_t err_text_len) {
  return ork::guarded(err, [&]() -> ork_type_list* {
    auto list = ork::parse({text, length}, err_text, err_text_len);
    if (!list) {
      *err = EINVAL;
    }
    return list.release();
  });
}

ORK_EXPORT struct ork_type_list* ork_type_list_read(const char* path, uint32_t* err, char* err_text,
                                                    uint32_t err_text_len) {
  return ork::guarded(err, [&]() -> ork_type_list* {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (file && file.peek() != std::ifstream::traits_type::eof()) {
      text << file.rdbuf();
    }
    if (!file.is_open() || file.bad() || text.bad() || errno != 0) {
      *err = static_cast<uint32_t>(errno != 0 ? errno : EIO);
      if (err_text != nullptr) {
        std::snprintf(err_text, err_text_len, "%s", strerror(static_cast<int>(*err)));
      }
      return nullptr;
    }
    const std::string content = text.str();
    return ork_type_list_parse(content.data(), content.size(), err, err_text, err_text_len);
  });
}

ORK_EXPORT struct ork_type_list* ork_type_list_common(const struct ork_type_list* a,
                                                      const struct ork_type_list* b,
                                                      uint32_t* err) {
  return ork::guarded(err, [&] { return new ork_type_list(ork::common_types(*a, *b)); });
}

ORK_EXPORT uint32_t ork_type_list_size(const struct ork_type_list* list) {
  return static_cast<uint32_t>(list->entries.size());
}

ORK_EXPORT uint32_t ork_type_list_variants(const struct ork_type_list* list, const uint8_t* luid) {
  return list->variants(ork::luid_at(luid));
}

ORK_EXPORT void ork_type_list_each(const struct ork_type_list* list,
                                   void (*visit)(void* ctx, const char* name, const uint8_t* luid,
                                                 uint32_t variants),
                                   void* ctx) {
  for (const auto& entry : list->entries) {
    visit(ctx, entry.name.c_str(), entry.luid.data(), entry.variants);
  }
}

ORK_EXPORT size_t ork_type_list_text(const struct ork_type_list* list, char* buffer, size_t size) {
  uint32_t err = 0;
  return ork::guarded(&err, [&]() -> size_t {
    const std::string text = ork::text_of(*list);
    if (buffer != nullptr && text.size() < size) {
      std::memcpy(buffer, text.c_str(), text.size() + 1);
    }
    return text.size();
  });
}

ORK_EXPORT void ork_type_list_free(struct ork_type_list* list) { delete list; }

}  // extern "C"
