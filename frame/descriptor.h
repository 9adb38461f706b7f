// The contents of type descriptors, as constants. Only the statistics in the variant entries are
// ever written.
#pragma once

#include <array>

#include "model/named_rows.h"
#include "ork/handle.h"

namespace frame {

template <size_t N>
constexpr void put_text(char (&to)[N], const char* from) {
  for (size_t i = 0; from[i] != '\0'; ++i) to[i] = from[i];
}

constexpr uint8_t digit(char c) { return static_cast<uint8_t>(c <= '9' ? c - '0' : c - 'a' + 10); }

constexpr ork_type_info describe(const char* name, const char* luid, const char* kind,
                                 ork_variant_info* variants) {
  ork_type_info type{};
  type.magic = ORK_TYPE_INFO_MAGIC;
  for (size_t i = 0; i < sizeof type.luid; ++i)
    type.luid[i] = static_cast<uint8_t>(digit(luid[2 * i]) << 4 | digit(luid[2 * i + 1]));
  put_text(type.luid_text, luid);
  put_text(type.name, name);
  put_text(type.module, "fwe_ui_wayfind");
  put_text(type.kind, kind);
  type.unassigned_id = -1;
  type.varinfo = variants;
  return type;
}

// The variant block of a record.
template <const model::Record& R>
constexpr auto make_entries() {
  std::array<ork_variant_entry, model::row<R>.variants> entries{};
  for (uint32_t v = 0; v < entries.size(); ++v) {
    const model::Sizes size = model::sizes(R, v);
    entries[v].variant = v;
    entries[v].used_length = size.used;
    entries[v].alloc_slop = size.slop;
  }
  return entries;
}
template <const model::Record& R>
inline constinit auto record_entries = make_entries<R>();
template <const model::Record& R>
inline constinit ork_variant_info record_variants{
    static_cast<int8_t>(record_entries<R>.size()), {}, record_entries<R>.data()};
template <const model::Record& R>
inline constexpr ork_type_info record_descriptor = describe(R.name, R.identity.luid, "type",
                                                            &record_variants<R>);

// All other types have one variant.
constexpr ork_variant_entry single_entry(size_t used, size_t slop) {
  return {0, static_cast<uint32_t>(used), static_cast<uint32_t>(slop), 0, 0, 0, 0};
}

constexpr const char* kind_word(const model::Enum&) { return "enum"; }
constexpr const char* kind_word(const model::FlagSet&) { return "flag"; }
template <const auto& T>
inline constinit ork_variant_entry small_entry = single_entry(16, model::row<T>.size - size_t{16});
template <const auto& T>
inline constinit ork_variant_info small_variants{1, {}, &small_entry<T>};
template <const auto& T>
inline constexpr ork_type_info small_descriptor = describe(T.name, T.identity.luid, kind_word(T),
                                                           &small_variants<T>);

template <const model::Message& M>
inline constinit ork_variant_entry message_entry = single_entry(32 + sizeof(void*) *
                                                                         model::row<M>.records,
                                                                0);
template <const model::Message& M>
inline constinit ork_variant_info message_variants{1, {}, &message_entry<M>};
template <const model::Message& M>
inline constexpr ork_type_info message_descriptor = describe(M.name, M.identity.luid, "message",
                                                             &message_variants<M>);

}  // namespace frame
