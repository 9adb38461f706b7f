/*
 * show_base, the sibling message module of the base of all shows.
 */
#ifndef ORK_SHOW_BASE_H
#define ORK_SHOW_BASE_H

#include "handle.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Registers one handler for all bundles of this module, or none if it is null. Returns the old
   one. */
ork_bundle_handler show_base_bundle_handler_register(ork_bundle_handler handler);

/* Unregisters the module's handler and returns it. */
ork_bundle_handler show_base_bundle_handler_unregister(void);

#ifdef __cplusplus
}
#endif

#endif
