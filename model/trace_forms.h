// The 58 forms of trace text. A form and the type that raises it make one entry of the trace
// channel.
#pragma once

#include <cstdint>

namespace model {

// Arguments that a text takes; the digits name them in order: 1 a text, 4 a 32-bit number, 5 a
// pointer. The value is the pattern's number in the index sections.
enum class Pattern : uint8_t {
  p1 = 0,
  p0 = 1,
  p44 = 2,
  p444 = 3,
  p51 = 4,
  p15 = 5,
  p111 = 6,
  p11 = 7,
  p4 = 8
};

// `chosen` is settled at the call: error, or debug while the runtime suppresses failed messages.
// `none` is never raised.
enum class Level : uint8_t {
  fatal = 0,
  error = 3,
  info = 6,
  debug = 7,
  chosen = 0xFE,
  none = 0xFF
};

enum class Form : uint8_t {
  corrupted_handle,
  not_tracked,
  non_tracked,
  no_variants,
  variant_beyond,
  mapping_stays,
  stats_failed,
  type_corrupted,
  oid_count_error,
  oid_count_object,
  references_error,
  references_object,
  jump,
  create_failed,
  no_state_base,
  embed_object,
  has_references,
  mapping_removed,
  tracking_mismatch,
  marshal_failed,
  references_failed,
  reference_stays,
  outside_bundle,
  calling_dispatch_handler,
  get_error,
  detach_error,
  set_error,
  replace_error,
  marshal_error,
  domain_refuses,
  bundle_refuses,
  bundle_uncounted,
  unmarshal_error,
  recording_error,
  default_handler,
  unmarshal_only_error,
  record_in_error,
  recorder_memory,
  recorder_stream,
  not_recorded,
  print_error,
  to_xml_error,
  from_xml_error,
  start_inside,
  starting,
  starting_unnamed,
  abort_error,
  aborting,
  commit_error,
  calling_handle_handler,
  calling_registered_handler,
  calling_linked_handler,
  no_handler,
  small_create_failed,
  small_embed_object,
  reallocating,
  value_not_tracked,
  dump_without_variants,
  count_
};

struct FormText {
  // '@' stands for the name of the type or message, '#' for the name of a message's record
  const char* text;
  Pattern pattern;
  Level level;
};

inline constexpr FormText form_texts[] = {
    {"Corrupted ORK Handle", Pattern::p0, Level::fatal},
    {"The object is not state tracked", Pattern::p0, Level::error},
    {"The object is non state tracked", Pattern::p0, Level::error},
    {"varinfo is NULL", Pattern::p0, Level::fatal},
    {"variant %u requested only %u variants present", Pattern::p44, Level::info},
    {"@ destroy: Failed to remove oid mapping for object. Error %s", Pattern::p1, Level::error},
    {"ork_stats_inc failed %s", Pattern::p1, Level::none},
    {"tinfo is null or corrupted", Pattern::p0, Level::fatal},
    {"Error already present in call to get object oid count", Pattern::p0, Level::error},
    {"Invalid object passed in to get object oid count", Pattern::p0, Level::error},
    {"Error present in call to get table references from object", Pattern::p0, Level::error},
    {"Cannot get table references. Invalid object passed on", Pattern::p0, Level::error},
    {"offset_jump read_len %d offset_jump_base %d _ork_variant_jump %d", Pattern::p444,
     Level::info},
    {"error in @ create: %s", Pattern::p1, Level::error},
    {"sttr_base can not be NULL in NESTED case. Please check the parent object and provide the "
     "correct state tracking base pointer",
     Pattern::p0, Level::error},
    {"Invalid object pointer passed in to set instance flag", Pattern::p0, Level::error},
    {"@ destroy: Object has references and will be cleaned up when all of them are released",
     Pattern::p0, Level::info},
    {"@ destroy: Successfully removed OID mapping", Pattern::p0, Level::debug},
    {"ORK handle and object state tracking mis-match", Pattern::p0, Level::fatal},
    {"Message %s failed to marshal: %s", Pattern::p11, Level::chosen},
    {"@ destroy: Failed to get oid references from object. Error %s", Pattern::p1, Level::error},
    {"@ destroy: Failed to decrement ref count of oid %p. Error %s", Pattern::p51, Level::error},
    {"Abort message received outside of bundle context", Pattern::p0, Level::error},
    {"Invoking LUT-registered handler for %s", Pattern::p1, Level::debug},
    {"Error present when getting value for #: %s", Pattern::p1, Level::debug},
    {"Error present getting detached # value for @: %s", Pattern::p1, Level::debug},
    {"Error present when setting value for #: %s", Pattern::p1, Level::debug},
    {"Error present when freeing and setting value for #: %s", Pattern::p1, Level::debug},
    {"Error present in call to message marshal: %s", Pattern::p1, Level::debug},
    {"domainfail: Message %s (%s) is not allowed for the current domain (%s)", Pattern::p111,
     Level::error},
    {"Message %s is not valid for bundle: %s", Pattern::p11, Level::error},
    {"Message %s instance is not present in bundle %s", Pattern::p11, Level::error},
    {"Error present in call to %s message unmarshal: %s", Pattern::p11, Level::debug},
    {"Error %d in recording @ message", Pattern::p4, Level::error},
    {"default fwe_ui_wayfind_@_message handler called", Pattern::p0, Level::info},
    {"Error present in call to %s unmarshal: %s", Pattern::p11, Level::debug},
    {"Already passed in error to @ message record %d", Pattern::p4, Level::none},
    {"ORK record - malloc failed", Pattern::p0, Level::fatal},
    {"ORK record - NULL file handle for message @", Pattern::p0, Level::error},
    {"Error %d @ message not recorded, xml len %d", Pattern::p44, Level::error},
    {"Already have error when printing @: %s", Pattern::p1, Level::debug},
    {"Already have error when rendering XML for @: %s", Pattern::p1, Level::debug},
    {"Already have error when rendering @ to XML: %s", Pattern::p1, Level::debug},
    {"Start message %s received while aready in bundle context", Pattern::p1, Level::error},
    {"Bundle starting for %s with LUT %p", Pattern::p15, Level::debug},
    {"Bundle %s start message handler with LUT %p", Pattern::p15, Level::debug},
    {"Error set in aborting bundle: %s", Pattern::p1, Level::error},
    {"Bundle aborting for %s with LUT %p", Pattern::p15, Level::debug},
    {"Error set in committing bundle: %s", Pattern::p1, Level::error},
    {"Invoking ORK handle-registered handler for %s", Pattern::p1, Level::debug},
    {"Invoking registered bundle handler for %s", Pattern::p1, Level::debug},
    {"Invoking linked-in handler for %s", Pattern::p1, Level::debug},
    {"Call to unimplemented handler for %s", Pattern::p1, Level::error},
    {"error in @ create %s", Pattern::p1, Level::error},
    {"Invalid object handle passed to set embedded flag", Pattern::p0, Level::error},
    {"Reallocating resource for @", Pattern::p0, Level::error},
    {"The val object is not state tracked", Pattern::p0, Level::error},
    {"type variant cached info is NULL during usage dump", Pattern::p0, Level::error},
};
static_assert(sizeof form_texts / sizeof form_texts[0] == static_cast<unsigned>(Form::count_));

}  // namespace model
