// The library's records and their functions, by name.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "tools/schema/wayfind_schema.h"

namespace kit {

// The record of that name, or null.
inline const wayfind_record* find_record(std::string_view name) {
  for (unsigned i = 0; i < wayfind_record_count; ++i) {
    if (wayfind_records[i].name == name) {
      return &wayfind_records[i];
    }
  }
  return nullptr;
}

inline const wayfind_record& record(std::string_view name) {
  if (const wayfind_record* found = find_record(name)) {
    return *found;
  }
  throw std::runtime_error("no record " + std::string(name));
}

// The function by what stands behind the name of its type or field, or null.
inline void (*find_function(const wayfind_function* table, std::string_view suffix))(void) {
  for (; table->suffix != nullptr; ++table) {
    if (table->suffix == suffix) {
      return table->address;
    }
  }
  return nullptr;
}

inline bool has_function(const wayfind_function* table, std::string_view suffix) {
  return find_function(table, suffix) != nullptr;
}

// The same through its prototype, in which objects are void pointers:
//
//   function<uint32_t(ork_handle*, uint32_t, const void*)>(record.functions, "_len")
template <class Prototype>
std::remove_pointer_t<Prototype>* function(const wayfind_function* table, std::string_view suffix) {
  if (const auto found = find_function(table, suffix)) {
    return reinterpret_cast<std::remove_pointer_t<Prototype>*>(found);
  }
  throw std::runtime_error("no function " + std::string(suffix));
}

// ---- Arguments that vary by record ------------------------------------------

namespace detail {
template <size_t... I>
uint64_t call_with(void (*function)(void), const std::vector<uint64_t>& words,
                   std::index_sequence<I...>) {
  return reinterpret_cast<uint64_t (*)(decltype(static_cast<uint64_t>(I))...)>(function)(
      words[I]...);
}
template <size_t N>
uint64_t call_upto(void (*function)(void), const std::vector<uint64_t>& words) {
  if constexpr (N > 48) {
    throw std::runtime_error("too many arguments");
  } else {
    return words.size() == N ? call_with(function, words, std::make_index_sequence<N>())
                             : call_upto<N + 1>(function, words);
  }
}
}  // namespace detail

// Calls a function whose parameters after the fixed ones vary by record: every parameter of these
// families is a word or a pointer, and each takes one register or one slot of the stack.
inline uint64_t call_words(void (*function)(void), const std::vector<uint64_t>& words) {
  return detail::call_upto<1>(function, words);
}

inline uint64_t word(const void* address) { return reinterpret_cast<uint64_t>(address); }

}  // namespace kit
