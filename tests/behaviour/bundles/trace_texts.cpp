// The texts that the start handler hands to the trace library: they stand ready in the library,
// nothing is formatted for a trace.
#include <dlfcn.h>

#include "behaviour/bundles/family.h"
#include "ork/flight.h"

namespace {

thread_local const char* heard = nullptr;  // the text of the last trace

}  // namespace

#define HEAR(pattern, parameters, ...)                                                     \
  extern "C" void __FLf_##pattern parameters {                                             \
    static auto* const next =                                                              \
        reinterpret_cast<decltype(&__FLf_##pattern)>(dlsym(RTLD_NEXT, "__FLf_" #pattern)); \
    heard = text;                                                                          \
    next(section, index, module, level, __VA_ARGS__);                                      \
  }
#define CALL_SITE const void *section, uint32_t index, uint32_t module, uint32_t level

HEAR(1, (CALL_SITE, const char* text), text)
HEAR(15, (CALL_SITE, const char* text, const void* address), text, address)

namespace {

using kit::Handle;
using messages::Bundle;

class TraceTexts : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();

  const char* text_of_a_start(bool inside_another) const {
    const Handle handle;
    handle->bundle_rx_active = inside_another ? 1 : 0;
    uint32_t err = 0;
    heard = nullptr;
    bundle.start().handle_message(handle.get(), 0, nullptr, nullptr, &err);
    return heard;
  }
};

TEST_P(TraceTexts, stand_ready_in_the_library) {
  for (const bool inside_another : {false, true}) {
    const char* const text = text_of_a_start(inside_another);
    EXPECT_EQ(text_of_a_start(inside_another), text);
    Dl_info place{};
    Dl_info function{};
    ASSERT_NE(dladdr(text, &place), 0);
    dladdr(reinterpret_cast<const void*>(bundle.start().unmarshal_function()), &function);
    ASSERT_EQ(place.dli_fbase, function.dli_fbase);
    EXPECT_EQ(text, std::string("fwe_ui_wayfind_") + bundle.name() +
                        (inside_another ? "_bundle_start_message" : ""));
  }
}

INSTANTIATE_TEST_SUITE_P(All, TraceTexts, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

}  // namespace
