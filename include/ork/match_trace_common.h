/*
 * match_trace_common, the sibling message module of match traces.
 */
#ifndef ORK_MATCH_TRACE_COMMON_H
#define ORK_MATCH_TRACE_COMMON_H

#include "handle.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Registers one handler for all bundles of this module, or none if it is null. Returns the old
   one. */
ork_bundle_handler match_trace_common_bundle_handler_register(ork_bundle_handler handler);

/* Unregisters the module's handler and returns it. */
ork_bundle_handler match_trace_common_bundle_handler_unregister(void);

#ifdef __cplusplus
}
#endif

#endif
