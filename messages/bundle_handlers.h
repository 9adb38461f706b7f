// What the library itself does when a control message arrives. A handle is idle, or it accumulates
// messages from a start until the commit or abort.
#pragma once

#include "messages/bundle.h"

namespace messages {

void handle_start(ork_handle* handle, uint32_t instance, void* message, uint32_t* err,
                  const Bundle& bundle);
void handle_abort(ork_handle* handle, uint32_t instance, void* message, uint32_t* err,
                  const Bundle& bundle);
void handle_commit(ork_handle* handle, uint32_t instance, void* ctx, void* message, uint32_t* err,
                   ork_bundle_handler linked_in, const Bundle& bundle);

}  // namespace messages
