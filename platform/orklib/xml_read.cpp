#include "xml_read.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "guard.h"
#include "runtime.h"
#include "support/export.h"
#include "xml_document.h"

namespace ork {
namespace {

std::string content_of(const xmlNode* node) {
  xmlChar* content = xmlNodeGetContent(node);
  if (content == nullptr) {
    throw std::bad_alloc();
  }
  const std::unique_ptr<xmlChar, void (*)(void*)> owned(content, xmlFree);
  return reinterpret_cast<const char*>(content);
}

constexpr const char* blanks = " \t\r\n";

}  // namespace

std::optional<std::string> element_text(ork_handle* handle, const char* path, ork_xml* xml,
                                        uint32_t* err, char* err_text, uint32_t err_text_len) {
  return guarded(err, [&]() -> std::optional<std::string> {
    const Selection selection = xml->select(path);
    if (selection.status != 0) {
      refuse_element(handle, path, selection.status, err, err_text, err_text_len);
      return std::nullopt;
    }
    if (selection.count == 0) {
      fail(handle, err, ENOENT);
      return std::nullopt;
    }
    return content_of(selection.first);
  });
}

void refuse_element(ork_handle* handle, const char* path, uint32_t number, uint32_t* err,
                    char* err_text, uint32_t err_text_len) {
  fail(handle, err, number);
  if (err_text != nullptr) {
    std::snprintf(err_text, err_text_len, "Failed xpath: %s", path);
  }
}

std::string_view trimmed(std::string_view text) {
  const size_t begin = std::min(text.find_first_not_of(blanks), text.size());
  const size_t end = text.find_last_not_of(blanks);
  return text.substr(begin, end == std::string_view::npos ? 0 : end - begin + 1);
}

std::optional<uint64_t> parse_number(std::string_view text, uint64_t max) {
  text = trimmed(text);
  const int base = text.starts_with("0x") ? 16 : 10;
  text.remove_prefix(base == 16 ? 2 : 0);
  uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value, base);
  const bool whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
  return whole && value <= max ? std::optional(value) : std::nullopt;
}

}  // namespace ork

extern "C" {

ORK_EXPORT uint32_t xml_get_element_nodecount(struct ork_xml* xml, const char* xpath,
                                              uint32_t* count) {
  uint32_t err = 0;
  *count = 0;
  const ork::Selection selection = ork::guarded(&err, [&] { return xml->select(xpath); });
  *count = selection.count;
  return err != 0 ? err : selection.status;
}

ORK_EXPORT uint32_t xml_get_element_value(struct ork_xml* xml, const char* xpath, char* value,
                                          uint32_t value_len, uint32_t) {
  uint32_t err = 0;
  return ork::guarded(&err,
                      [&]() -> uint32_t {
                        const ork::Selection selection = xml->select(xpath);
                        if (selection.status != 0 || selection.count == 0) {
                          return selection.status != 0 ? selection.status : ENOENT;
                        }
                        std::snprintf(value, value_len, "%s",
                                      ork::content_of(selection.first).c_str());
                        return 0;
                      }) |
         err;
}

}  // extern "C"
