// The question for a type's identifier goes on to the runtime as it is: whatever its arguments are,
// in registers or on the stack, they arrive as they were given.
#include <array>

#include "laws/frame/fields.h"

namespace {

using Words = std::array<uint64_t, 9>;

Words arrived;
constexpr uint64_t answer = 0xFEDCBA9876543210;

}  // namespace

// This program's own, in front of the spy's, with more arguments than the runtime's has.
extern "C" [[gnu::visibility("default")]] uint64_t get_luid_of_nine(uint64_t a, uint64_t b,
                                                                    uint64_t c, uint64_t d,
                                                                    uint64_t e, uint64_t f,
                                                                    uint64_t g, uint64_t h,
                                                                    uint64_t i) asm("ork_get_luid");

uint64_t get_luid_of_nine(uint64_t a, uint64_t b, uint64_t c, uint64_t d, uint64_t e, uint64_t f,
                          uint64_t g, uint64_t h, uint64_t i) {
  arrived = {a, b, c, d, e, f, g, h, i};
  return answer;
}

namespace frame {

TEST(Luid, every_type_hands_all_arguments_on_and_gives_the_answer_back) {
  uint64_t asked = 0;
  const auto ask = [&](const std::string& name, const wayfind_function* functions) {
    Words given;
    for (size_t i = 0; i < given.size(); ++i) {
      given[i] = ~uint64_t{0} / 613 * ++asked;
    }
    arrived.fill(0);
    EXPECT_EQ(kit::call_words(kit::function<void()>(functions, "_get_luid"),
                              {given.begin(), given.end()}),
              answer)
        << name;
    EXPECT_EQ(arrived, given) << name;
  };
  for (const Type& type : types()) {
    ask(type.told.name, type.schema.functions);
  }
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) {
    ask(wayfind_small_types[i].name, wayfind_small_types[i].functions);
  }
  EXPECT_EQ(asked, 9u * (56 + 11 + 1));
}

}  // namespace frame
