// What a table is called in the model's sources: hop_chan_data, where the type that it describes has
// a longer name.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "model/rows.h"

namespace generator {

// Compilers spell a template's arguments out in the names of its functions.
template <const auto& Table>
constexpr std::string_view identifier() {
  std::string_view name = __PRETTY_FUNCTION__;
  name.remove_prefix(name.find("Table = "));
  name.remove_prefix(name.find("model::") + sizeof "model::" - 1);
  return name.substr(0, name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"));
}

template <const auto& Tables, size_t... I>
constexpr std::array<std::string_view, sizeof...(I)> identifiers(std::index_sequence<I...>) {
  return {identifier<*Tables[I]>()...};
}
template <const auto& Tables>
inline constexpr auto identifiers_of =
    identifiers<Tables>(std::make_index_sequence<model::count(Tables)>{});

// "model::" and the identifier, as generated code names a table.
template <const auto& Tables>
std::string qualified(size_t index) {
  return "model::" + std::string(identifiers_of<Tables>[index]);
}

}  // namespace generator
