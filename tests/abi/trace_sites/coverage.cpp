// When all sites have been raised: which of the 5,656 entries were not, and why.
#include <map>

#include "stage.h"
#include "texts.h"

namespace trace_sites {
namespace {

struct Silent {
  const char* reason;
  size_t entries;
};

// By the end of the text, which is the same for every type.
const std::map<std::string, Silent> silent = {
    {"ork_stats_inc failed %s",
     {"no path: enums, the flag set and messages raise their counters themselves, which cannot "
      "fail",
      108}},
    {" message record %d", {"no path: a record is not read once an error stands", 28}},
    {" destroy: Failed to get oid references from object. Error %s",
     {"an embedded record: it holds no reference, so its references are never asked for", 34}},
    {" destroy: Failed to decrement ref count of oid %p. Error %s",
     {"an embedded record: it holds no reference that could be given up", 34}},
    {"Invoking linked-in handler for %s",
     {"another process, the one that defines the handlers", 18}},
};

class Coverage : public testing::Environment {
 public:
  void TearDown() override {
    if (testing::GTEST_FLAG(filter) != "*") return;
    std::map<std::string, size_t> missing;
    for (const auto& [place, entry] : told_order().entries()) {
      if (raised().contains(place)) continue;
      bool known = false;
      for (const auto& [end, why] : silent) {
        if (!entry.text.ends_with(end)) continue;
        ++missing[end];
        known = true;
      }
      EXPECT_TRUE(known) << "not raised: " << entry.function << ": " << entry.text;
    }
    size_t all_missing = 0;
    for (const auto& [end, why] : silent) {
      EXPECT_EQ(missing[end], why.entries) << end;
      all_missing += why.entries;
    }
    EXPECT_EQ(told_order().entries().size(), 5656u);
    EXPECT_EQ(raised().size(), 5656u - all_missing);
  }
};

const testing::Environment* const coverage = testing::AddGlobalTestEnvironment(new Coverage);

}  // namespace
}  // namespace trace_sites
