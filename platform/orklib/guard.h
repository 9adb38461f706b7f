// The boundary between the runtime's own C++ and its C callers.
#pragma once

#include <cerrno>
#include <cstdint>
#include <new>
#include <type_traits>

namespace ork {

// Runs work unless *err is set; memory that runs out becomes error 12. Nothing else can be thrown
// behind this line.
template <typename Work>
auto guarded(uint32_t* err, Work work) noexcept -> std::invoke_result_t<Work> {
  using Result = std::invoke_result_t<Work>;
  if (*err == 0) {
    try {
      return work();
    } catch (const std::bad_alloc&) {
      *err = ENOMEM;
    }
  }
  if constexpr (!std::is_void_v<Result>) {
    return Result{};
  }
}

}  // namespace ork
