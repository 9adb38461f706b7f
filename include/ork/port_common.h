/*
 * port_common, the sibling message module of ports.
 */
#ifndef ORK_PORT_COMMON_H
#define ORK_PORT_COMMON_H

#include "handle.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Makes handler the one for all bundles of this module; null takes it away. Gives the one before.
   */
ork_bundle_handler port_common_bundle_handler_register(ork_bundle_handler handler);

/* Takes the module's handler away and gives it back. */
ork_bundle_handler port_common_bundle_handler_unregister(void);

#ifdef __cplusplus
}
#endif

#endif
