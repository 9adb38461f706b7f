// The forms of trace text.
#pragma once

#include <string>

namespace trace_sites::text {

inline const std::string corrupted = "Corrupted ORK Handle";
inline const std::string not_tracked = "The object is not state tracked";
inline const std::string non_tracked = "The object is non state tracked";
inline const std::string no_variants = "varinfo is NULL";
inline const std::string variant_beyond = "variant %u requested only %u variants present";
inline const std::string stats_failed = "ork_stats_inc failed %s";
inline const std::string type_corrupted = "tinfo is null or corrupted";
inline const std::string oid_count_error = "Error already present in call to get object oid count";
inline const std::string oid_count_object = "Invalid object passed in to get object oid count";
inline const std::string references_error =
    "Error present in call to get table references from object";
inline const std::string references_object =
    "Cannot get table references. Invalid object passed on";
inline const std::string jump = "offset_jump read_len %d offset_jump_base %d _ork_variant_jump %d";
inline const std::string no_state_base =
    "sttr_base can not be NULL in NESTED case. Please check the parent object and provide the "
    "correct state tracking base pointer";
inline const std::string embed_object = "Invalid object pointer passed in to set instance flag";
inline const std::string small_embed_object = "Invalid object handle passed to set embedded flag";
inline const std::string tracking_mismatch = "ORK handle and object state tracking mis-match";
inline const std::string value_not_tracked = "The val object is not state tracked";
inline const std::string dump_without_variants =
    "type variant cached info is NULL during usage dump";

inline std::string mapping_stays(const std::string& type) {
  return type + " destroy: Failed to remove oid mapping for object. Error %s";
}
inline std::string has_references(const std::string& type) {
  return type +
         " destroy: Object has references and will be cleaned up when all of them are released";
}
inline std::string mapping_removed(const std::string& type) {
  return type + " destroy: Successfully removed OID mapping";
}
inline std::string references_failed(const std::string& type) {
  return type + " destroy: Failed to get oid references from object. Error %s";
}
inline std::string reference_stays(const std::string& type) {
  return type + " destroy: Failed to decrement ref count of oid %p. Error %s";
}
inline std::string reallocating(const std::string& type) {
  return "Reallocating resource for " + type;
}

inline const std::string start_inside = "Start message %s received while aready in bundle context";
inline const std::string starting = "Bundle starting for %s with LUT %p";
inline const std::string starting_unnamed = "Bundle %s start message handler with LUT %p";
inline const std::string abort_error = "Error set in aborting bundle: %s";
inline const std::string outside_bundle = "Abort message received outside of bundle context";
inline const std::string aborting = "Bundle aborting for %s with LUT %p";
inline const std::string commit_error = "Error set in committing bundle: %s";
inline const std::string calling_dispatch_handler = "Invoking LUT-registered handler for %s";
inline const std::string calling_handle_handler = "Invoking ORK handle-registered handler for %s";
inline const std::string calling_registered_handler = "Invoking registered bundle handler for %s";
inline const std::string calling_linked_handler = "Invoking linked-in handler for %s";
inline const std::string no_handler = "Call to unimplemented handler for %s";

inline const std::string marshal_error = "Error present in call to message marshal: %s";
inline const std::string domain_refuses =
    "domainfail: Message %s (%s) is not allowed for the current domain (%s)";
inline const std::string bundle_refuses = "Message %s is not valid for bundle: %s";
inline const std::string marshal_failed = "Message %s failed to marshal: %s";
inline const std::string bundle_uncounted = "Message %s instance is not present in bundle %s";
inline const std::string unmarshal_error = "Error present in call to %s message unmarshal: %s";
inline const std::string unmarshal_only_error = "Error present in call to %s unmarshal: %s";
inline const std::string recorder_memory = "ORK record - malloc failed";

inline std::string recording_error(const std::string& message) {
  return "Error %d in recording " + message + " message";
}
inline std::string default_handler(const std::string& message) {
  return "default fwe_ui_wayfind_" + message + "_message handler called";
}
inline std::string record_in_error(const std::string& message) {
  return "Already passed in error to " + message + " message record %d";
}
inline std::string recorder_stream(const std::string& message) {
  return "ORK record - NULL file handle for message " + message;
}
inline std::string not_recorded(const std::string& message) {
  return "Error %d " + message + " message not recorded, xml len %d";
}

}  // namespace trace_sites::text
