/*
 * SuperFastHash, the published 32-bit hash, taking a seed.
 */
#ifndef ORK_SUPERFASTHASH_H
#define ORK_SUPERFASTHASH_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Returns the hash of length bytes, continued from seed. The published form starts from the length:
 * with seed equal to length the result is the published one. A length of 0 returns seed; data may
 * then be null.
 */
uint32_t SuperFastHash(const void* data, uint32_t length, uint32_t seed);

#ifdef __cplusplus
}
#endif

#endif
