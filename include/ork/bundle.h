/*
 * Services of the runtime for bundles and for the recording of messages.
 */
#ifndef ORK_BUNDLE_H
#define ORK_BUNDLE_H

#include <stdio.h>

#include "handle.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Sending ------------------------------------------------------------- */

/*
 * Checks that the open bundle accepts one more message with this LUID, and adds it to the send
 * list. name is the text of the table row, for traces. Errors: ENOENT (2) if the bundle's table has
 * no such message; EEXIST (17) if a bundle may hold only one and it was counted already; ENOMEM
 * (12).
 */
void bundle_message_validate_add(struct ork_handle* handle, uint32_t instance, const uint8_t* luid,
                                 const char* name, uint32_t* err);

/* Counts a message that was written. Errors: ENOENT (2) if it was never added. */
void bundle_message_increment_count(struct ork_handle* handle, const uint8_t* luid, uint32_t* err);

/* Empties the send list and closes the bundle. Works with *err set too. */
void bundle_send_message_list_destroy(struct ork_handle* handle, uint32_t instance, uint32_t* err);

/* ---- Receiving ----------------------------------------------------------- */

/* Returns nonzero while a received bundle is open on the handle. */
uint32_t orklib_is_accumulating_bundle(struct ork_handle* handle);

/* Destroys the members that are still in the receive list and closes the bundle. Works with *err
   set too. */
void bundle_receive_message_list_destroy(struct ork_handle* handle, uint32_t instance,
                                         uint32_t* err);

/*
 * Returns the row of the dispatch in progress, or null outside a dispatch. If lut is not null, *lut
 * is always written: the table of that dispatch, or null.
 */
const struct ork_bundle_dispatch_info* orklib_in_dispatch_message_info(struct ork_handle* handle,
                                                                       void** lut);

/* ---- Reports and recording ----------------------------------------------- */

/* Returns nonzero if a failed marshal of a message is reported at level debug instead of error. */
uint32_t orklib_suppress_messages_enabled(struct ork_handle* handle);

/* Returns nonzero while the process records the messages that it receives. */
uint32_t orklib_msg_recorder_get_state(void);

/* Returns the stream of the recording, which the runtime owns, or null. */
FILE* orklib_msg_recorder_get_handle(void);

#ifdef __cplusplus
}
#endif

#endif
