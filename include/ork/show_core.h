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

/* Makes handler the one for all bundles of this module; null takes it away. Gives the one before.
   */
ork_bundle_handler show_core_bundle_handler_register(ork_bundle_handler handler);

/* Takes the module's handler away and gives it back. */
ork_bundle_handler show_core_bundle_handler_unregister(void);

#ifdef __cplusplus
}
#endif

#endif
