/*
 * card_stats, the sibling message module of card statistics.
 */
#ifndef ORK_CARD_STATS_H
#define ORK_CARD_STATS_H

#include "handle.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Makes handler the one for all bundles of this module; null takes it away. Gives the one before.
   */
ork_bundle_handler card_stats_bundle_handler_register(ork_bundle_handler handler);

/* Takes the module's handler away and gives it back. */
ork_bundle_handler card_stats_bundle_handler_unregister(void);

#ifdef __cplusplus
}
#endif

#endif
