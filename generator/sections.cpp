// The sections for offline tools: the trace channel's index and texts, and the build manifest. Only
// the index is loaded with the library.
#include <bzlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "generator/names.h"
#include "generator/output.h"

namespace generator {
namespace {

using model::Owner;

constexpr const char* section_ids[] = {"d8386ffc9b58056dfed00107189c605a",
                                       "865a9f4b483b8238b89d4ae9c97bf0ff",
                                       "9e8b28a9eb796d25a381ca4855746a0f"};

// For the decoder; its structure is the decoder's own.
constexpr unsigned char decoder[] = {0x01, 0x03, 0x04, 0x01, 0x01, 0x03, 0x04, 0x04, 0x04,
                                     0x04, 0x04, 0x04, 0x04, 0x05, 0x04, 0x01, 0x04, 0x04,
                                     0x01, 0x05, 0x07, 0x04, 0x01, 0x04, 0x01, 0x04, 0x01,
                                     0x05, 0x04, 0x01, 0x04, 0x01, 0x02, 0x04};
static_assert(sizeof decoder == 34);

constexpr size_t build_record_size = 276;

std::string little_endian(uint64_t value, size_t bytes) {
  std::string out;
  for (size_t i = 0; i < bytes; ++i) out += static_cast<char>(value >> 8 * i & 0xFF);
  return out;
}

std::string binary(const std::string& hex) {
  std::string out;
  for (size_t i = 0; i < hex.size(); i += 2)
    out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return out;
}

// The text of an entry. Every text begins with a blank.
std::string entry_text(Owner owner, size_t index, model::Form form) {
  std::string name;
  std::string record;
  switch (owner) {
    case Owner::module: break;
    case Owner::record: name = model::records[index]->name; break;
    case Owner::field: name = model::records[model::field_rows[index].record]->name; break;
    case Owner::small_type: name = small_name(index); break;
    case Owner::bundle: name = model::bundles[index]->name; break;
    case Owner::message: name = model::messages[index]->name; break;
    case Owner::carried:
      name = model::messages[model::carried_rows[index].message]->name;
      record = model::records[model::carried_rows[index].record]->name;
      break;
  }
  std::string text = " ";
  for (const char* c = model::form_texts[static_cast<size_t>(form)].text; *c != '\0'; ++c)
    text += *c == '@' ? name : *c == '#' ? record : std::string(1, *c);
  return text;
}

std::string compress(const std::string& text) {
  std::string packed(text.size() + text.size() / 100 + 600, '\0');
  auto size = static_cast<unsigned>(packed.size());
  std::string source = text;
  if (BZ2_bzBuffToBuffCompress(packed.data(), &size, source.data(),
                               static_cast<unsigned>(source.size()), 9, 0, 0) != BZ_OK)
    abort();
  packed.resize(size);
  return packed;
}

std::string assembler_bytes(const std::string& data) {
  std::string text;
  char byte[8];
  for (size_t i = 0; i < data.size(); ++i) {
    text += i % 32 == 0 ? "\n\t.byte " : ",";
    std::snprintf(byte, sizeof byte, "%u",
                  static_cast<unsigned>(static_cast<unsigned char>(data[i])));
    text += byte;
  }
  return text + "\n";
}

std::string unloaded(const std::string& section, const std::string& data) {
  return "\t.section " + section + ",\"\",@progbits" + assembler_bytes(data);
}

std::string trace_sections() {
  std::string index[3];
  std::string texts[3];
  model::walk_plan([&](uint8_t section, Owner owner, size_t row, model::Function function) {
    const model::Run& run = model::run_of(function);
    for (size_t i = 0; i < run.count; ++i) {
      const std::string text = entry_text(owner, row, run.forms[i]);
      const auto pattern =
          static_cast<uint32_t>(model::form_texts[static_cast<size_t>(run.forms[i])].pattern);
      const uint32_t number = static_cast<uint32_t>(index[section].size() / 6) & 0xFFFF;
      index[section] += little_endian(pattern << 16 | number, 4) + little_endian(text.size(), 2);
      texts[section] += text;
    }
  });
  std::string out;
  for (size_t s = 0; s < 3; ++s) {
    const std::string symbol = "wayfind_trace_section_" + std::to_string(s);
    out += std::string("\t.section .flight_luids_") + section_ids[s] +
           ",\"a\",@progbits\n\t.p2align 3\n\t.globl " + symbol + "\n\t.hidden " + symbol + "\n" +
           symbol + ":" +
           assembler_bytes(little_endian(1, 2) + little_endian(s, 2) + binary(section_ids[s]) +
                           index[s]);
  }
  return out + unloaded(".flight_format_strings", compress(texts[0] + texts[1] + texts[2])) +
         unloaded(".flight_decoder",
                  std::string(reinterpret_cast<const char*>(decoder), sizeof decoder));
}

// LUID, definition, kind, highest variant and size of one type.
std::string digest_line(const model::Identity& identity, const char* kind, size_t variants,
                        size_t size) {
  char text[96];
  std::snprintf(text, sizeof text, "%s:%s%s%03zu:%05zuN\n", identity.luid, identity.definition,
                kind, variants - 1, size);
  return text;
}

std::string digest() {
  std::vector<std::pair<std::string, std::string>> types;  // by name
  for (const model::Record* record : model::records) {
    types.emplace_back(record->name,
                       digest_line(record->identity, "type", model::variant_count(*record),
                                   model::digest_size(*record)));
  }
  for (const model::Enum* type : model::enums)
    types.emplace_back(type->name, digest_line(type->identity, "enum", 1, 16));
  for (const model::FlagSet* type : model::flag_sets)
    types.emplace_back(type->name, digest_line(type->identity, "flag", 1, 16));
  std::vector<std::pair<std::string, std::string>> messages;  // by LUID
  for (const model::Message* message : model::messages) {
    messages.emplace_back(message->identity.luid, digest_line(message->identity, "mess", 1, 0));
  }
  std::sort(types.begin(), types.end());
  std::sort(messages.begin(), messages.end());
  std::string text = "# fwe_ui_wayfind.digest\n";
  for (const auto& [name, line] : types) text += line;
  for (const auto& [luid, line] : messages) text += line;
  return text + '\0';
}

// Says nothing of the machine that builds, so that one source always gives one file; the comment
// fills the record up.
std::string build_record(const std::string& date) {
  const std::string head = "fwe_ui_wayfind\npkg_id: " + std::string(40, '0') +
                           "\nbuilt by: wayfind\non host: any\npid: 0\nat: " + date + "\ncomment: ";
  const size_t tail = 2;  // line feed, zero byte
  const size_t blanks =
      head.size() + tail < build_record_size ? build_record_size - head.size() - tail : 0;
  return head + std::string(blanks, ' ') + '\n' + '\0';
}

std::string manifest_entry(uint32_t kind, const std::string& payload) {
  std::string entry = little_endian(payload.size(), 4) + little_endian(kind, 4) + payload;
  entry.resize(model::round_up(entry.size(), 4), '\0');
  return entry;
}

}  // namespace

void write_sections(const std::string& folder, const std::string& date) {
  const std::string manifest = manifest_entry(2, digest()) + manifest_entry(1, build_record(date));
  write_file(folder + "/sections.s", trace_sections() + unloaded(".manifest", manifest) +
                                         "\t.section .note.GNU-stack,\"\",@progbits\n");
}

}  // namespace generator
