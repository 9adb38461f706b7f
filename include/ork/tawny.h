/*
 * tawny, memory accounting by allocation site.
 */
#ifndef ORK_TAWNY_H
#define ORK_TAWNY_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Names the site of the next allocation that this thread makes through a handle. */
void tawny_set_callsite_tag(uint32_t tag);

#ifdef __cplusplus
}
#endif

#endif
