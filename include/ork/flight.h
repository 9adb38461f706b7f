/*
 * flight, the binary trace library. A trace names its text by section and index. The text itself is
 * in a part of the module's file that is never loaded; an offline decoder brings the two together.
 */
#ifndef ORK_FLIGHT_H
#define ORK_FLIGHT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Level words: the level number in the top byte. */
enum {
  ORK_LEVEL_FATAL = 0x0000000, /* the next statement aborts the process */
  ORK_LEVEL_ERROR = 0x3000000,
  ORK_LEVEL_INFO = 0x6000000,
  ORK_LEVEL_DEBUG = 0x7000000
};

/*
 * Registers a module by name, once: stores its number, from 1 up, in *module_id. *once is the
 * guard, 0 before the first call; later calls change nothing. Returns 0, or ENOMEM (12) if no
 * number is left. Safe from any thread; both words must live as long as the module.
 */
int32_t flight_module_init_fn(const char* name, uint16_t* module_id, uint32_t* once);

/*
 * One function per argument pattern; the digits name the arguments in order: 1 a text, 4 a 32-bit
 * number, 5 a pointer. section_id is the address of the 16-byte id of the module's index section,
 * index the entry there, module_id the number from flight_module_init_fn or 0, level_word an
 * ORK_LEVEL_... word. Texts are copied; null is printed as "(null)". Safe from any thread.
 */
void __FLf_0(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word);
void __FLf_1(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word,
             const char* a);
void __FLf_4(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word,
             uint32_t a);
void __FLf_11(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word,
              const char* a, const char* b);
void __FLf_15(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word,
              const char* a, const void* b);
void __FLf_44(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word,
              uint32_t a, uint32_t b);
void __FLf_51(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word,
              const void* a, const char* b);
void __FLf_111(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word,
               const char* a, const char* b, const char* c);
void __FLf_444(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word,
               uint32_t a, uint32_t b, uint32_t c);

#ifdef __cplusplus
}
#endif

#endif
