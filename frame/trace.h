// Traces: the form of a text and the row that raises it give section and index of the entry. The
// text itself is in no loaded segment.
#pragma once

#include <cstdlib>

#include "model/trace_plan.h"
#include "ork/flight.h"

extern "C" {
extern uint16_t g_ork_fwe_ui_wayfind_trace_module_id;
int32_t ork_fwe_ui_wayfind_trace_init(void);
}

namespace trace {

using model::Form;
using model::Function;
using model::Level;
using model::Pattern;

// The id of a loaded index section, which follows the section's version and number.
inline constexpr size_t section_id_offset = 4;
const void* section_id(uint8_t section);

constexpr uint32_t level_word(Level level) { return static_cast<uint32_t>(level) * 0x1000000u; }

template <Pattern P, class... Args>
void emit(model::Site site, uint32_t level, Args... args) {
  const void* id = section_id(site.section);
  const uint32_t module = __atomic_load_n(&g_ork_fwe_ui_wayfind_trace_module_id, __ATOMIC_RELAXED);
  if constexpr (P == Pattern::p0) {
    __FLf_0(id, site.index, module, level);
  } else if constexpr (P == Pattern::p1) {
    __FLf_1(id, site.index, module, level, args...);
  } else if constexpr (P == Pattern::p4) {
    __FLf_4(id, site.index, module, level, args...);
  } else if constexpr (P == Pattern::p11) {
    __FLf_11(id, site.index, module, level, args...);
  } else if constexpr (P == Pattern::p15) {
    __FLf_15(id, site.index, module, level, args...);
  } else if constexpr (P == Pattern::p44) {
    __FLf_44(id, site.index, module, level, args...);
  } else if constexpr (P == Pattern::p51) {
    __FLf_51(id, site.index, module, level, args...);
  } else if constexpr (P == Pattern::p111) {
    __FLf_111(id, site.index, module, level, args...);
  } else if constexpr (P == Pattern::p444) {
    __FLf_444(id, site.index, module, level, args...);
  } else {
    static_assert(P == Pattern::p0, "a pattern without a function of the trace channel");
  }
}

// `Nth` distinguishes entries of one form within one function, in the order of the function's
// steps.
template <Function F, Form M, size_t Nth = 0, class Row, class... Args>
[[gnu::cold]] void raise(const Row& row, Args... args) {
  constexpr const model::FormText& form = model::form_texts[static_cast<size_t>(M)];
  static_assert(form.level != Level::none && form.level != Level::chosen &&
                form.level != Level::fatal);
  constexpr uint16_t at = model::position(F, M, Nth);
  emit<form.pattern>(model::site(row, F, at), level_word(form.level), args...);
}

// Traces, then ends the process. There is no other way in which the library does that.
template <Function F, Form M, size_t Nth = 0, class Row>
[[noreturn, gnu::cold]] void fatal(const Row& row) {
  constexpr const model::FormText& form = model::form_texts[static_cast<size_t>(M)];
  static_assert(form.level == Level::fatal);
  constexpr uint16_t at = model::position(F, M, Nth);
  emit<form.pattern>(model::site(row, F, at), level_word(form.level));
  abort();
}

}  // namespace trace
