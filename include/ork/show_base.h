/*
 * show_base, the sibling message module of the base of all shows.
 */
#ifndef ORK_SHOW_BASE_H
#define ORK_SHOW_BASE_H

#include "handle.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Makes handler the one for all bundles of this module; null takes it away. Gives the one before.
   */
ork_bundle_handler show_base_bundle_handler_register(ork_bundle_handler handler);

/* Takes the module's handler away and gives it back. */
ork_bundle_handler show_base_bundle_handler_unregister(void);

#ifdef __cplusplus
}
#endif

#endif
