/*
 * show_core, the sibling message module of show requests.
 */
#ifndef ORK_SHOW_CORE_H
#define ORK_SHOW_CORE_H

#include "handle.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The LUID of the show request message, ORK_LUID_SIZE bytes. */
extern const uint8_t message_ui_req_msg_luid[16];

/* Its text for bundle tables and traces. */
extern const char message_ui_req_msg_name[];

/* Registers one handler for all bundles of this module, or none if it is null. Returns the old
   one. */
ork_bundle_handler show_core_bundle_handler_register(ork_bundle_handler handler);

/* Unregisters the module's handler and returns it. */
ork_bundle_handler show_core_bundle_handler_unregister(void);

#ifdef __cplusplus
}
#endif

#endif
