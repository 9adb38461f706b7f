// What the parts of the spy share.
#pragma once

#include "spy.h"

namespace spy {

// The one door to the log of the calling thread.
struct Recorder {
  static bool active();
  static void call(const std::string& text);
  static void format(const char* text);
  static void announcement(const Announcement& announcement);
  static void freed(const void* block);
  static std::string name_block(const void* block, size_t size);
};

// While one lives, the calling thread is inside the platform.
struct Inside {
  Inside();
  ~Inside();
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
};

// The replacement of a function, or an empty any.
const std::any* replacement_of(const void* function);

// ---- How an argument prints; an empty text is left out of the call ----------

inline std::string text_of(const ork_handle*) { return ""; }
inline std::string text_of(const ork_domain*) { return "domain"; }
std::string text_of(const ork_type_info* type);
std::string text_of(const char* text);
inline std::string text_of(char* buffer) { return symbol(buffer); }
inline std::string text_of(const void* address) { return symbol(address); }
template <class R, class... A>
std::string text_of(R (*function)(A...));
std::string text_of_function(const void* function);

template <class T>
requires std::is_integral_v<T> std::string text_of(T number) { return std::to_string(number); }

template <class R, class... A>
std::string text_of(R (*function)(A...)) {
  return text_of_function(reinterpret_cast<const void*>(function));
}

std::string joined(const char* function, std::initializer_list<std::string> arguments);

}  // namespace spy
