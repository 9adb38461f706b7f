// What a document may hold. It is looked at before anything is built from it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ork {

namespace xml_limit {
constexpr size_t bytes = size_t{256} << 20;
constexpr size_t parts = 2'000'000;  // elements, attributes, comments, CDATA sections, instructions
constexpr size_t depth = 64;
constexpr size_t tag_bytes = size_t{64} << 10;
constexpr size_t attributes = 64;               // of one element
constexpr size_t namespaces = 64;               // declared in the document
constexpr size_t text_bytes = size_t{1} << 20;  // of a text, a comment or an instruction
}  // namespace xml_limit

struct XmlRefusal {
  uint64_t line;
  std::string reason;
};

// Nothing for a text that may be looked at at all.
std::optional<XmlRefusal> refusal_of_size(size_t bytes);

// Nothing for a document in UTF-8 that is well-formed, has no document type and keeps to the
// limits. Takes time in proportion to the text, whatever is in it, and stops at the first thing
// that is wrong.
std::optional<XmlRefusal> refusal_of(std::string_view text);

}  // namespace ork
