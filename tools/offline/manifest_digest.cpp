#include "tools/offline/manifest_digest.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <string_view>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

enum : uint32_t { build_record = 1, digest = 2 };

// A line: LUID, ':', definition hash, kind, newest variant, ':', size, a letter.
constexpr size_t line_size = 79;
constexpr size_t digits = 32;
constexpr size_t kind_at = 65;
constexpr size_t newest_at = 69;
constexpr size_t size_at = 73;

bool is_hex(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

bool parse_number(std::string_view text, unsigned& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

bool parse_line(std::string_view line, Definition& definition) {
  if (line.size() != line_size || line[digits] != ':' || line[size_at - 1] != ':') return false;
  definition.luid = line.substr(0, digits);
  definition.hash = line.substr(digits + 1, digits);
  definition.kind = line.substr(kind_at, newest_at - kind_at);
  const bool known = definition.kind == "type" || definition.kind == "enum" ||
                     definition.kind == "flag" || definition.kind == "mess";
  return known && is_hex(definition.luid) && is_hex(definition.hash) &&
         parse_number(line.substr(newest_at, size_at - 1 - newest_at), definition.newest) &&
         parse_number(line.substr(size_at, line_size - 1 - size_at), definition.size);
}

// Splits off a line with its line feed; none is left when there is no line feed.
bool next_line(std::string_view& text, std::string_view& line) {
  const size_t end = text.find('\n');
  if (end == std::string_view::npos) return false;
  line = text.substr(0, end);
  text.remove_prefix(end + 1);
  return true;
}

void parse_digest(std::string_view text, const TypeNames& names, Manifest& manifest,
                  const std::string& origin) {
  constexpr std::string_view begin = "# ";
  constexpr std::string_view end = ".digest";
  std::string_view line;
  if (!next_line(text, line) || !line.starts_with(begin) || !line.ends_with(end))
    throw Failure(origin + ": the digest has no heading");
  manifest.module = line.substr(begin.size(), line.size() - begin.size() - end.size());
  std::set<std::string> seen;
  while (next_line(text, line)) {
    Definition definition;
    if (!parse_line(line, definition)) throw Failure(origin + ": a line of the digest is damaged");
    if (!seen.insert(definition.luid).second)
      throw Failure(origin + ": the digest lists " + definition.luid + " twice");
    const auto name = names.find(definition.luid);
    definition.name = name != names.end() ? name->second : definition.luid;
    manifest.definitions.push_back(std::move(definition));
  }
  if (!text.empty()) throw Failure(origin + ": the last line of the digest is not whole");
}

}  // namespace

Manifest parse_manifest(Bytes section, const TypeNames& names, const std::string& origin) {
  constexpr size_t head_size = 8;
  Manifest manifest;
  bool has_digest = false;
  while (!section.empty()) {
    const size_t size = section.size() < head_size ? SIZE_MAX : u32_at(section, 0);
    if (size == SIZE_MAX || size > section.size() - head_size)
      throw Failure(origin + ": the manifest is cut short");
    const Bytes payload = section.subspan(head_size, size);
    if (payload.empty() || payload.back() != 0)
      throw Failure(origin + ": an entry of the manifest has no end");
    const std::string_view text(reinterpret_cast<const char*>(payload.data()), payload.size() - 1);
    const uint32_t kind = u32_at(section, 4);
    if (kind == digest && !has_digest) {
      parse_digest(text, names, manifest, origin);
      has_digest = true;
    } else if (kind == build_record) {
      manifest.build += text;
    } else {
      throw Failure(origin + ": the manifest has an entry of kind " + std::to_string(kind) +
                    " too many");
    }
    section = section.subspan(std::min(section.size(), head_size + ((size + 3) & ~size_t{3})));
  }
  if (!has_digest) throw Failure(origin + ": the manifest has no digest");
  return manifest;
}

Manifest read_manifest(const LibraryFile& library) {
  return parse_manifest(library.section(".manifest"), library.type_names(), library.name());
}

}  // namespace wayfind
