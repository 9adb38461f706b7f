// Every function that the module imports from the platform's libraries, each defined once more in
// front of its library.
#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "ork/card_stats.h"
#include "ork/ctl_link.h"
#include "ork/feat_defs.h"
#include "ork/flight.h"
#include "ork/match_trace_common.h"
#include "ork/port_common.h"
#include "ork/show_base.h"
#include "ork/show_core.h"
#include "ork/superfasthash.h"
#include "ork/tawny.h"
#include "spy_recorder.h"
#include "trace_texts.h"

namespace {

template <class F>
struct Signature;
template <class R, class... A>
struct Signature<R(A...)> {
  using Result = R;
  template <size_t i>
  using Argument = std::tuple_element_t<i, std::tuple<A...>>;
};
template <class F>
using Result = typename Signature<F>::Result;
template <class F, size_t i>
using Argument = typename Signature<F>::template Argument<i>;

// Writes a call down and hands it on, to its replacement if a test has set one.
template <class R, class... A>
R through(const char* name, R (*self)(A...), R (*next)(A...), std::type_identity_t<A>... args) {
  if (spy::Recorder::active()) {
    spy::Recorder::call(spy::joined(name, {spy::text_of(args)...}));
  }
  const spy::Inside inside;
  if (const std::any* const body = spy::replacement_of(reinterpret_cast<const void*>(self))) {
    return std::any_cast<const std::function<R(A...)>&>(*body)(args...);
  }
  return next(args...);
}

// Writes a trace down in words. A fatal one goes to stderr as well, where the parent of a process
// that aborts can read it.
void trace(const void* section_id, uint32_t index, uint32_t level_word,
           std::initializer_list<spy::TraceArgument> arguments) {
  if (!spy::Recorder::active() && level_word != ORK_LEVEL_FATAL) {
    return;
  }
  const char* const level = level_word == ORK_LEVEL_FATAL   ? "fatal"
                            : level_word == ORK_LEVEL_ERROR ? "error"
                            : level_word == ORK_LEVEL_INFO  ? "info"
                            : level_word == ORK_LEVEL_DEBUG ? "debug"
                                                            : "unknown level";
  const std::string line =
      std::string("trace(") + level + "," + spy::trace_text(section_id, index, arguments) + ")";
  spy::Recorder::call(line);
  if (level_word == ORK_LEVEL_FATAL) {
    std::fprintf(stderr, "%s\n", line.c_str());
  }
}

template <class F>
F* next_in_line(const char* name) {
  auto* const next = reinterpret_cast<F*>(dlsym(RTLD_NEXT, name));
  if (!next) {
    std::fprintf(stderr, "no %s behind the spy\n", name);
    std::abort();
  }
  return next;
}

}  // namespace

#define A(name, i) Argument<decltype(::name), i>
#define SPY(name, parameters, ...)                                   \
  Result<decltype(::name)> name parameters {                         \
    static auto* const next = next_in_line<decltype(::name)>(#name); \
    return through(#name, &::name, next __VA_OPT__(, ) __VA_ARGS__); \
  }
#define SPY_0(f) SPY(f, (), )
#define SPY_1(f) SPY(f, (A(f, 0) a), a)
#define SPY_2(f) SPY(f, (A(f, 0) a, A(f, 1) b), a, b)
#define SPY_3(f) SPY(f, (A(f, 0) a, A(f, 1) b, A(f, 2) c), a, b, c)
#define SPY_4(f) SPY(f, (A(f, 0) a, A(f, 1) b, A(f, 2) c, A(f, 3) d), a, b, c, d)
#define SPY_5(f) SPY(f, (A(f, 0) a, A(f, 1) b, A(f, 2) c, A(f, 3) d, A(f, 4) e), a, b, c, d, e)
#define SPY_6(f) \
  SPY(f, (A(f, 0) a, A(f, 1) b, A(f, 2) c, A(f, 3) d, A(f, 4) e, A(f, 5) g), a, b, c, d, e, g)
#define SPY_7(f)                                                                                 \
  SPY(f, (A(f, 0) a, A(f, 1) b, A(f, 2) c, A(f, 3) d, A(f, 4) e, A(f, 5) g, A(f, 6) h), a, b, c, \
      d, e, g, h)
#define SPY_8(f)                                                                                   \
  SPY(f, (A(f, 0) a, A(f, 1) b, A(f, 2) c, A(f, 3) d, A(f, 4) e, A(f, 5) g, A(f, 6) h, A(f, 7) i), \
      a, b, c, d, e, g, h, i)
#define SPY_9(f)                                                                               \
  SPY(f,                                                                                       \
      (A(f, 0) a, A(f, 1) b, A(f, 2) c, A(f, 3) d, A(f, 4) e, A(f, 5) g, A(f, 6) h, A(f, 7) i, \
       A(f, 8) j),                                                                             \
      a, b, c, d, e, g, h, i, j)

// What all primitives have, and what is added for those that are compared, made and embedded.
#define SPY_VALUE(p) SPY_4(p##_get) SPY_4(p##_get_value) SPY_5(p##_set) SPY_5(p##_set_value)
#define SPY_CODED(p) \
  SPY_3(p##_len)     \
  SPY_6(p##_marshal) \
  SPY_7(p##_unmarshal) SPY_2(p##_hash) SPY_8(p##_print) SPY_8(p##_to_xml) SPY_8(p##_from_xml)
#define SPY_ELEMENT(p) SPY_1(p##_sizeof) SPY_2(p##_create) SPY_3(p##_destroy)
#define SPY_OBJECT(p) SPY_9(p##_initialize) SPY_3(p##_set_instance_embedded) SPY_2(p##_compare)
#define SPY_SIBLING(s) SPY_1(s##_bundle_handler_register) SPY_0(s##_bundle_handler_unregister)

extern "C" {

// One call a line: a formatter takes them for one long declaration.
// clang-format off
SPY_VALUE(u_int8)
SPY_CODED(u_int8)
SPY_ELEMENT(u_int8)
SPY_VALUE(u_int16)
SPY_CODED(u_int16)
SPY_ELEMENT(u_int16)
SPY_VALUE(u_int32)
SPY_CODED(u_int32)
SPY_ELEMENT(u_int32)
SPY_VALUE(u_int64)
SPY_CODED(u_int64)
SPY_VALUE(ork_boolean)
SPY_CODED(ork_boolean)
SPY_OBJECT(ork_boolean)
SPY_VALUE(link_type)
SPY_CODED(link_type)
SPY_OBJECT(link_type)
SPY_CODED(ip_address)
SPY_OBJECT(ip_address)
SPY_4(ip_address_get)
SPY_5(ip_address_set)
SPY_4(ip_address_destroy_internal)
SPY_4(ip_address_get_oid_count)
SPY_6(ip_address_get_object_references)
SPY_3(char_len)
SPY_6(char_marshal)
SPY_7(char_unmarshal)
SPY_9(null_string_print)
SPY_9(null_string_to_xml)
SPY_9(null_string_from_xml)

SPY_2(ork_store_err)
SPY_3(ork_store_epoch_err)
SPY_1(ork_clear_last_error)
SPY_3(ork_get_instance_variant)
SPY_3(ork_get_instance_obj_flag)
SPY_1(ork_get_manifested_type_info)
SPY_1(ork_get_manifested_type_info_ptr_mem)
SPY_4(ork_type_info_ptr_get)
SPY_4(ork_get_luid)
SPY_4(ork_domain_lookup_variant)
SPY_4(ork_domain_lookup_message_ok)
SPY_6(orklib_adjust_variant)
SPY_5(ork_update_variant_info)
SPY_3(orklib_get_sttr_offset)
SPY_4(orklib_update_sttr_offset)
SPY_4(ork_hd_mapping_destroy)
SPY_5(orklib_type_stats_create_object)
SPY_5(orklib_type_stats_destroy_object)
SPY_4(ork_request_oid_mapping_destroy)
SPY_5(orklib_lookup_and_update_oid_ref_count)
SPY_3(orklib_get_handle_ws)
SPY_3(orklib_malloc)
SPY_3(orklib_free)
SPY_5(orkdb_record_containment2)
SPY_3(orkdb_plat_set_dirty)
SPY_3(orkdb_plat_set_destroy)
SPY_4(orkdb_plat_set_detach)

SPY_6(_ork_instance_variant_marshal)
SPY_6(_ork_instance_variant_unmarshal)
SPY_6(_ork_instance_obj_flag_marshal)
SPY_6(_ork_instance_obj_flag_unmarshal)
SPY_7(_ork_instance_ra_data_marshal)
SPY_7(_ork_instance_ra_data_unmarshal)
SPY_6(_ork_variant_jump_marshal)
SPY_6(_ork_variant_jump_unmarshal)
SPY_6(_ork_message_header_marshal)
SPY_6(_ork_message_header_unmarshal)
SPY_6(ork_print_space)
SPY_7(start_tag)
SPY_6(start_tag_timestamp)
SPY_6(end_tag)
SPY_7(xml_enum_print)
SPY_3(xml_get_element_nodecount)
SPY_5(xml_get_element_value)

SPY_5(bundle_message_validate_add)
SPY_3(bundle_message_increment_count)
SPY_3(bundle_send_message_list_destroy)
SPY_3(bundle_receive_message_list_destroy)
SPY_1(orklib_is_accumulating_bundle)
SPY_2(orklib_in_dispatch_message_info)
SPY_1(orklib_suppress_messages_enabled)
SPY_0(orklib_msg_recorder_get_state)
SPY_0(orklib_msg_recorder_get_handle)

SPY_SIBLING(ctl_link)
SPY_SIBLING(feat_defs)
SPY_SIBLING(show_base)
SPY_SIBLING(card_stats)
SPY_SIBLING(port_common)
SPY_SIBLING(match_trace_common)
SPY_SIBLING(show_core)

SPY_3(flight_module_init_fn)
SPY_1(tawny_set_callsite_tag)
SPY_3(SuperFastHash)
// clang-format on

// A call with a text of its own is handed on as that text.
uint32_t ork_snprintf(ork_handle* handle, uint32_t instance, char* buffer, int32_t remaining,
                      uint32_t* err, const char* format, ...) {
  static auto* const next = next_in_line<decltype(::ork_snprintf)>("ork_snprintf");
  char text[4096];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  if (spy::Recorder::active()) {
    spy::Recorder::format(format);
    spy::Recorder::call(spy::joined(
        "ork_snprintf", {spy::text_of(instance), spy::symbol(buffer), spy::text_of(remaining),
                         spy::symbol(err), spy::text_of(static_cast<const char*>(text))}));
  }
  const spy::Inside inside;
  return next(handle, instance, buffer, remaining, err, "%s", text);
}

#define SPY_TRACE(pattern, parameters, ...)                                                 \
  void __FLf_##pattern parameters {                                                         \
    static auto* const next = next_in_line<decltype(::__FLf_##pattern)>("__FLf_" #pattern); \
    trace(section, index, level, {__VA_ARGS__});                                            \
    next(section, index, module, level __VA_OPT__(, ) __VA_ARGS__);                         \
  }
#define CALL_SITE const void *section, uint32_t index, uint32_t module, uint32_t level

SPY_TRACE(0, (CALL_SITE), )
SPY_TRACE(1, (CALL_SITE, const char* a), a)
SPY_TRACE(4, (CALL_SITE, uint32_t a), a)
SPY_TRACE(11, (CALL_SITE, const char* a, const char* b), a, b)
SPY_TRACE(15, (CALL_SITE, const char* a, const void* b), a, b)
SPY_TRACE(44, (CALL_SITE, uint32_t a, uint32_t b), a, b)
SPY_TRACE(51, (CALL_SITE, const void* a, const char* b), a, b)
SPY_TRACE(111, (CALL_SITE, const char* a, const char* b, const char* c), a, b, c)
SPY_TRACE(444, (CALL_SITE, uint32_t a, uint32_t b, uint32_t c), a, b, c)

}  // extern "C"
