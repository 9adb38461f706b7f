#include "ork/flight.h"

#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>

#include "ork/platform.h"
#include "sink.h"
#include "support/export.h"

namespace {

using flight::Sink;

void add(flight_trace& trace, const char* text) {
  const size_t i = trace.n_arguments++;
  trace.kind[i] = 1;
  std::strncpy(trace.text[i], text != nullptr ? text : "(null)", sizeof trace.text[i] - 1);
}

void add(flight_trace& trace, uint32_t number) {
  const size_t i = trace.n_arguments++;
  trace.kind[i] = 4;
  trace.number[i] = number;
}

void add(flight_trace& trace, const void* pointer) {
  const size_t i = trace.n_arguments++;
  trace.kind[i] = 5;
  trace.number[i] = reinterpret_cast<uintptr_t>(pointer);
}

template <typename... Arguments>
void emit(const void* section_id, uint32_t index, uint32_t module_id, uint32_t level_word,
          Arguments... arguments) {
  flight_trace trace{};
  std::memcpy(trace.section_id, section_id, sizeof trace.section_id);
  trace.index = index;
  trace.level_word = level_word;
  trace.module_id = static_cast<uint16_t>(module_id);
  (add(trace, arguments), ...);
  try {
    Sink::instance().store(trace, section_id);
  } catch (const std::bad_alloc&) {
    return;  // a trace that finds no memory is lost, as a full ring loses its oldest
  }
}

}  // namespace

extern "C" {

ORK_EXPORT int32_t flight_module_init_fn(const char* name, uint16_t* module_id, uint32_t* once) {
  static std::mutex guard;
  if (__atomic_load_n(once, __ATOMIC_ACQUIRE) != 0) {
    return 0;
  }
  const std::lock_guard lock(guard);
  if (*once != 0) {
    return 0;
  }
  try {
    const uint16_t id = Sink::instance().add_module(name, module_id);
    if (id == 0) {
      return ENOMEM;
    }
    __atomic_store_n(module_id, id, __ATOMIC_RELAXED);
    __atomic_store_n(once, 1U, __ATOMIC_RELEASE);
    return 0;
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

ORK_EXPORT void __FLf_0(const void* section_id, uint32_t index, uint32_t module_id,
                        uint32_t level_word) {
  emit(section_id, index, module_id, level_word);
}

ORK_EXPORT void __FLf_1(const void* section_id, uint32_t index, uint32_t module_id,
                        uint32_t level_word, const char* a) {
  emit(section_id, index, module_id, level_word, a);
}

ORK_EXPORT void __FLf_4(const void* section_id, uint32_t index, uint32_t module_id,
                        uint32_t level_word, uint32_t a) {
  emit(section_id, index, module_id, level_word, a);
}

ORK_EXPORT void __FLf_11(const void* section_id, uint32_t index, uint32_t module_id,
                         uint32_t level_word, const char* a, const char* b) {
  emit(section_id, index, module_id, level_word, a, b);
}

ORK_EXPORT void __FLf_15(const void* section_id, uint32_t index, uint32_t module_id,
                         uint32_t level_word, const char* a, const void* b) {
  emit(section_id, index, module_id, level_word, a, b);
}

ORK_EXPORT void __FLf_44(const void* section_id, uint32_t index, uint32_t module_id,
                         uint32_t level_word, uint32_t a, uint32_t b) {
  emit(section_id, index, module_id, level_word, a, b);
}

ORK_EXPORT void __FLf_51(const void* section_id, uint32_t index, uint32_t module_id,
                         uint32_t level_word, const void* a, const char* b) {
  emit(section_id, index, module_id, level_word, a, b);
}

ORK_EXPORT void __FLf_111(const void* section_id, uint32_t index, uint32_t module_id,
                          uint32_t level_word, const char* a, const char* b, const char* c) {
  emit(section_id, index, module_id, level_word, a, b, c);
}

ORK_EXPORT void __FLf_444(const void* section_id, uint32_t index, uint32_t module_id,
                          uint32_t level_word, uint32_t a, uint32_t b, uint32_t c) {
  emit(section_id, index, module_id, level_word, a, b, c);
}

ORK_EXPORT void flight_ring_each(void (*visit)(void* ctx, const struct flight_trace* trace),
                                 void* ctx) {
  Sink::instance().each([&](const flight_trace& trace) { visit(ctx, &trace); });
}

ORK_EXPORT void flight_ring_clear() { Sink::instance().clear(); }

ORK_EXPORT void flight_open(const char* path, uint32_t* err) {
  if (*err != 0) {
    return;
  }
  try {
    *err = Sink::instance().open(path);
  } catch (const std::bad_alloc&) {
    *err = ENOMEM;
  }
}

ORK_EXPORT void flight_close() { Sink::instance().close(); }

}  // extern "C"
