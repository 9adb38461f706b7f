// Registration of bundle handlers, for one bundle and for the module with those that it is built
// on.
#include "behaviour/bundles/family.h"
#include "fwe_ui_wayfind/module.h"
#include "ork/ctl_link.h"
#include "ork/show_core.h"
#include "support/spy.h"

namespace {

using messages::Bundle;

void first(ork_handle*, uint32_t, void*, uint32_t*) {}
void second(ork_handle*, uint32_t, void*, uint32_t*) {}

const std::vector<std::string> siblings = {"ctl_link",   "feat_defs",   "show_base",
                                           "card_stats", "port_common", "match_trace_common",
                                           "show_core"};

std::vector<std::string> told(const std::string& operation, const std::string& argument) {
  std::vector<std::string> calls;
  for (const std::string& sibling : siblings) {
    calls.push_back(sibling + "_bundle_handler_" + operation + "(" + argument + ")");
  }
  return calls;
}

class Registration : public testing::Test {
 protected:
  void SetUp() override {
    spy::forget_names();
    spy::name_at(reinterpret_cast<const void*>(first), "first");
    spy::name_at(reinterpret_cast<const void*>(second), "second");
  }
  void TearDown() override {
    fwe_ui_wayfind_bundle_handler_unregister();
    for (const Bundle& bundle : messages::bundles()) {
      bundle.unregister();
    }
  }
};

TEST_F(Registration, module_tells_the_seven_in_order) {
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_register(first), nullptr);
  EXPECT_CALLS(log, told("register", "first"));
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, first);
}

TEST_F(Registration, second_registration_gives_the_first_back) {
  fwe_ui_wayfind_bundle_handler_register(first);
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_register(second), first);
  EXPECT_CALLS(log, told("register", "second"));
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, second);
}

TEST_F(Registration, unregister_tells_the_seven_in_the_same_order) {
  fwe_ui_wayfind_bundle_handler_register(first);
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_unregister(), first);
  EXPECT_CALLS(log, told("unregister", ""));
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, nullptr);
}

TEST_F(Registration, unregister_with_nothing_there_still_tells_the_seven) {
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_unregister(), nullptr);
  EXPECT_CALLS(log, told("unregister", ""));
}

TEST_F(Registration, null_takes_the_handler_away_and_is_passed_on) {
  fwe_ui_wayfind_bundle_handler_register(first);
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_register(nullptr), first);
  EXPECT_CALLS(log, told("register", "null"));
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, nullptr);
}

TEST_F(Registration, modules_own_slot_is_written_before_any_sibling_is_told) {
  std::vector<ork_bundle_handler> seen;
  const auto at_register = spy::replace(ctl_link_bundle_handler_register, [&](ork_bundle_handler) {
    seen.push_back(fwe_ui_wayfind_bundle_registered_handler);
    return ork_bundle_handler{};
  });
  const auto at_unregister = spy::replace(ctl_link_bundle_handler_unregister, [&] {
    seen.push_back(fwe_ui_wayfind_bundle_registered_handler);
    return ork_bundle_handler{};
  });
  fwe_ui_wayfind_bundle_handler_register(first);
  fwe_ui_wayfind_bundle_handler_unregister();
  EXPECT_EQ(seen, (std::vector<ork_bundle_handler>{first, nullptr}));
}

TEST_F(Registration, results_of_the_siblings_are_not_used) {
  const auto odd = spy::answer(show_core_bundle_handler_register, second);
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_register(first), nullptr);
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, first);
}

TEST_F(Registration, module_leaves_the_slots_of_the_bundles_alone) {
  for (const Bundle& bundle : messages::bundles()) {
    bundle.do_register(second);
  }
  fwe_ui_wayfind_bundle_handler_register(first);
  for (const Bundle& bundle : messages::bundles()) {
    EXPECT_EQ(*bundle.schema().registered, second) << bundle.name();
  }
  fwe_ui_wayfind_bundle_handler_unregister();
  for (const Bundle& bundle : messages::bundles()) {
    EXPECT_EQ(*bundle.schema().registered, second) << bundle.name();
  }
}

TEST_F(Registration, bundle_slots_are_plain_stores_of_their_own) {
  const spy::Log log;
  for (const Bundle& bundle : messages::bundles()) {
    EXPECT_EQ(*bundle.schema().registered, nullptr);
    EXPECT_EQ(bundle.do_register(first), nullptr);
    EXPECT_EQ(*bundle.schema().registered, first);
    EXPECT_EQ(bundle.do_register(second), first);
    EXPECT_EQ(*bundle.schema().registered, second);
    for (const Bundle& other : messages::bundles()) {
      EXPECT_TRUE(other.schema().registered == bundle.schema().registered ||
                  *other.schema().registered == nullptr);
    }
    EXPECT_EQ(bundle.unregister(), second);
    EXPECT_EQ(*bundle.schema().registered, nullptr);
    EXPECT_EQ(bundle.unregister(), nullptr);
  }
  EXPECT_EQ(log.count("ctl_link_bundle_handler_register"), 0u);
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, nullptr);
}

}  // namespace
