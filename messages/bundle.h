// Bundles: a start message, member messages, then a commit or an abort. The sender's handle
// remembers which bundle is open, and so which messages may be sent; the receiver's handle keeps
// the messages until the commit, when one handler is called for all of them.
#pragma once

#include "messages/message.h"

namespace messages {

enum class Control : uint8_t { start, abort, commit };

// What the engines know of one bundle.
struct Bundle {
  const model::BundleRow& row;
  const char* name;
  const char* full_name;                // with the module's name in front
  const char* start_name;               // of the start message, in full
  const uint8_t* luids[3];              // of start, abort, commit
  const ork_bundle_message_row* table;  // the messages allowed inside; a row of zeros ends it
  ork_bundle_handler* registered;       // the bundle's own handler slot
};

}  // namespace messages
