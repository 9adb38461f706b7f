#include "tools/look/word.h"

#include <algorithm>

namespace look {

std::vector<Word> split(std::string_view list) {
  std::vector<Word> words;
  for (size_t begin = 0; begin <= list.size();) {
    const size_t end = std::min(list.find(',', begin), list.size());
    words.push_back({begin, std::string(list.substr(begin, end - begin))});
    begin = end + 1;
  }
  return words;
}

}  // namespace look
