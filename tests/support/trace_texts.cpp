#include "trace_texts.h"

#include <bzlib.h>
#include <dlfcn.h>
#include <elf.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <vector>

#include "spy.h"

namespace spy {

namespace {

constexpr size_t texts_size = 214548;

using Id = std::string; /* 16 bytes */

// All texts of one library, by index section.
class Texts {
 public:
  explicit Texts(const char* path) {
    std::ifstream file(path, std::ios::binary);
    const std::string image((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    Elf64_Ehdr header;
    std::memcpy(&header, image.data(), sizeof header);
    std::vector<Elf64_Shdr> sections(header.e_shnum);
    std::memcpy(sections.data(), image.data() + header.e_shoff,
                sections.size() * sizeof(Elf64_Shdr));
    const char* const section_names = image.data() + sections[header.e_shstrndx].sh_offset;

    std::map<uint16_t, std::string> indexes; /* by section number */
    std::string words(texts_size, '\0');
    for (const Elf64_Shdr& section : sections) {
      const std::string section_name = section_names + section.sh_name;
      const std::string content = image.substr(section.sh_offset, section.sh_size);
      if (section_name.rfind(".flight_luids_", 0) == 0) {
        uint16_t number;
        std::memcpy(&number, content.data() + 2, sizeof number);
        indexes[number] = content;
      } else if (section_name == ".flight_format_strings") {
        auto length = static_cast<unsigned>(words.size());
        std::string packed = content;
        if (BZ2_bzBuffToBuffDecompress(words.data(), &length, packed.data(),
                                       static_cast<unsigned>(packed.size()), 0, 0) != BZ_OK) {
          throw std::runtime_error("the texts do not unpack");
        }
      }
    }
    size_t at = 0;
    for (const auto& [number, content] : indexes) {
      std::vector<std::string>& texts = by_section_[content.substr(4, 16)];
      for (size_t entry = 20; entry + 6 <= content.size(); entry += 6) {
        uint16_t length;
        std::memcpy(&length, content.data() + entry + 4, sizeof length);
        texts.push_back(words.substr(at + 1, length - 1u));
        at += length;
      }
    }
  }

  const std::string& text(const Id& section, uint32_t index) const {
    return by_section_.at(section).at(index);
  }

 private:
  std::map<Id, std::vector<std::string>> by_section_;
};

const Texts& texts_of(const void* section_id) {
  static std::map<std::string, Texts> loaded;
  Dl_info info{};
  dladdr(section_id, &info);
  return loaded.try_emplace(info.dli_fname, info.dli_fname).first->second;
}

std::string printed(const TraceArgument& argument, char conversion) {
  if (const auto* const text = std::get_if<const char*>(&argument)) {
    return *text ? *text : "(null)";
  }
  if (const auto* const number = std::get_if<uint32_t>(&argument)) {
    return conversion == 'd' ? std::to_string(static_cast<int32_t>(*number))
                             : std::to_string(*number);
  }
  return symbol(std::get<const void*>(argument));
}

}  // namespace

std::string trace_text(const void* section_id, uint32_t index,
                       std::initializer_list<TraceArgument> arguments) {
  const std::string id(static_cast<const char*>(section_id), 16);
  std::string line = texts_of(section_id).text(id, index);
  size_t from = 0;
  for (const TraceArgument& argument : arguments) {
    const size_t place = line.find('%', from);
    if (place == std::string::npos) {
      return line + " [more arguments than places]";
    }
    const std::string value = printed(argument, line.at(place + 1));
    line.replace(place, 2, value);
    from = place + value.size();
  }
  return line;
}

}  // namespace spy
