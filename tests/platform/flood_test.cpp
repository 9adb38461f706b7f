// LUIDs come from peers: however they are chosen, the work grows with their number alone.
#include <array>
#include <ctime>

#include "support.h"

namespace platform_test {
namespace {

constexpr uint32_t most_lines = 4096;

using Luid = std::array<uint8_t, ORK_LUID_SIZE>;

// The nth of a set whose members are equal in their first or their last eight bytes.
enum class Equal { first_half, last_half };

Luid nth_luid(Equal equal, uint32_t n) {
  Luid luid{};
  uint8_t* const differs = luid.data() + (equal == Equal::first_half ? 8 : 0);
  const uint64_t spread = (n + 1) * uint64_t{0x9e3779b97f4a7c15};
  std::memcpy(differs, &spread, sizeof spread);
  return luid;
}

std::string announcement(Equal equal, uint32_t lines) {
  std::string text;
  for (uint32_t n = 0; n < lines; ++n) {
    text += "t ";
    for (const uint8_t byte : nth_luid(equal, n)) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x", byte);
      text += digits;
    }
    text += " 1\n";
  }
  return text;
}

// Seconds of processor time that work takes, the least of five attempts.
double time_of(const std::function<void()>& work) {
  double least = 1e9;
  for (int attempt = 0; attempt < 5; ++attempt) {
    timespec begin{}, end{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &begin);
    work();
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
    least = std::min(least, static_cast<double>(end.tv_sec - begin.tv_sec) +
                                static_cast<double>(end.tv_nsec - begin.tv_nsec) * 1e-9);
  }
  return least;
}

// A table that took equal halves for equal keys would need some 100 times as long for one of the
// two sets.
void expect_same_cost(const std::function<void(Equal)>& work) {
  const double first = time_of([&] { work(Equal::first_half); });
  const double last = time_of([&] { work(Equal::last_half); });
  EXPECT_LT(first, 5 * last);
  EXPECT_LT(last, 5 * first);
}

TEST(Flood, announcement_of_a_mebibyte_is_refused_at_its_first_line_too_many) {
  const std::string text = announcement(Equal::first_half, 30'000);
  ASSERT_GT(text.size(), size_t{1} << 20);
  uint32_t err = 0;
  char reason[64] = "";
  EXPECT_EQ(ork_type_list_parse(text.data(), text.size(), &err, reason, sizeof reason), nullptr);
  EXPECT_EQ(err, 22u);
  EXPECT_STREQ(reason, "line 4097: more than 4096 lines");
}

TEST(Flood, announcement_of_4096_lines_is_read) {
  const List list = parse_list("# comments count\n" + announcement(Equal::first_half, 4095));
  EXPECT_EQ(ork_type_list_size(list.get()), 4095u);
}

TEST(Flood, announcement_costs_the_same_whatever_its_luids_are) {
  const std::string texts[] = {announcement(Equal::first_half, most_lines),
                               announcement(Equal::last_half, most_lines)};
  expect_same_cost([&](Equal equal) { parse_list(texts[static_cast<size_t>(equal)]); });
}

TEST(Flood, learning_of_a_peer_costs_the_same_whatever_its_luids_are) {
  const Handle handle;
  const List lists[] = {parse_list(announcement(Equal::first_half, most_lines)),
                        parse_list(announcement(Equal::last_half, most_lines))};
  expect_same_cost([&](Equal equal) {
    uint32_t err = 0;
    ork_handle_set_peer(handle.get(), "peer", lists[static_cast<size_t>(equal)].get(), &err);
    EXPECT_EQ(err, 0u);
  });
}

TEST(Flood, dispatcher_costs_the_same_whatever_its_luids_are) {
  std::vector<Luid> luids[2];
  for (uint32_t n = 0; n < most_lines; ++n) {
    luids[0].push_back(nth_luid(Equal::first_half, n));
    luids[1].push_back(nth_luid(Equal::last_half, n));
  }
  expect_same_cost([&](Equal equal) {
    uint32_t err = 0;
    ork_dispatcher* dispatcher = ork_dispatcher_create(&err);
    for (const Luid& luid : luids[static_cast<size_t>(equal)]) {
      const ork_dispatch_entry entry{{luid.data(), "m", nullptr, nullptr, nullptr}, nullptr};
      ork_dispatcher_add(dispatcher, &entry, &err);
    }
    EXPECT_EQ(err, 0u);
    ork_dispatcher_free(dispatcher);
  });
}

}  // namespace
}  // namespace platform_test
