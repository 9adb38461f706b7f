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
 * Asks whether the open bundle takes one more message with this LUID, and enters it in the send
 * list. name is the text of the table row, for traces. *err: 2 when the bundle's table has no such
 * message, 17 when it may stand in a bundle once and has been counted already, 12 without memory.
 */
void bundle_message_validate_add(struct ork_handle* handle, uint32_t instance, const uint8_t* luid,
                                 const char* name, uint32_t* err);

/* Counts a message that was written. *err is 2 when it was never entered. */
void bundle_message_increment_count(struct ork_handle* handle, const uint8_t* luid, uint32_t* err);

/* Empties the send list and closes the bundle; done with *err set as well. */
void bundle_send_message_list_destroy(struct ork_handle* handle, uint32_t instance, uint32_t* err);

/* ---- Receiving ----------------------------------------------------------- */

/* Nonzero while a received bundle is open on the handle. */
uint32_t orklib_is_accumulating_bundle(struct ork_handle* handle);

/* Destroys the members still in the receive list and closes the bundle; done with *err set as well.
   */
void bundle_receive_message_list_destroy(struct ork_handle* handle, uint32_t instance,
                                         uint32_t* err);

/*
 * The row of the dispatch in progress, or null outside one. lut, if not null, is always written:
 * the table that the dispatch runs on, or null.
 */
const struct ork_bundle_dispatch_info* orklib_in_dispatch_message_info(struct ork_handle* handle,
                                                                       void** lut);

/* ---- Reports and recording ----------------------------------------------- */

/* Nonzero: a message that fails to marshal is reported at level debug instead of error. */
uint32_t orklib_suppress_messages_enabled(struct ork_handle* handle);

/* Nonzero while the process records the messages that it receives. */
uint32_t orklib_msg_recorder_get_state(void);

/* The stream of the recording, owned by the runtime, or null. */
FILE* orklib_msg_recorder_get_handle(void);

#ifdef __cplusplus
}
#endif

#endif
