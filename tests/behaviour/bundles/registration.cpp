// Registration of bundle handlers, for one bundle and for the module with those that it is built
// on.
#include "behaviour/bundles/family.h"
#include "fwe_ui_wayfind/module.h"
#include "ork/ctl_link.h"
#include "ork/show_core.h"
#include "support/spy.h"

namespace {

using family::Bundle;

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
    for (const Bundle& bundle : family::bundles()) {
      bundle.unregister();
    }
  }
};

TEST_F(Registration, ModuleTellsTheSevenInOrder) {
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_register(first), nullptr);
  EXPECT_CALLS(log, told("register", "first"));
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, first);
}

TEST_F(Registration, SecondRegistrationGivesTheFirstBack) {
  fwe_ui_wayfind_bundle_handler_register(first);
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_register(second), first);
  EXPECT_CALLS(log, told("register", "second"));
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, second);
}

TEST_F(Registration, UnregisterTellsTheSevenInTheSameOrder) {
  fwe_ui_wayfind_bundle_handler_register(first);
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_unregister(), first);
  EXPECT_CALLS(log, told("unregister", ""));
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, nullptr);
}

TEST_F(Registration, UnregisterWithNothingThereStillTellsTheSeven) {
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_unregister(), nullptr);
  EXPECT_CALLS(log, told("unregister", ""));
}

TEST_F(Registration, NullTakesTheHandlerAwayAndIsPassedOn) {
  fwe_ui_wayfind_bundle_handler_register(first);
  const spy::Log log;
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_register(nullptr), first);
  EXPECT_CALLS(log, told("register", "null"));
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, nullptr);
}

TEST_F(Registration, ModulesOwnSlotIsWrittenBeforeAnySiblingIsTold) {
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

TEST_F(Registration, ResultsOfTheSiblingsAreNotUsed) {
  const auto odd = spy::answer(show_core_bundle_handler_register, second);
  EXPECT_EQ(fwe_ui_wayfind_bundle_handler_register(first), nullptr);
  EXPECT_EQ(fwe_ui_wayfind_bundle_registered_handler, first);
}

TEST_F(Registration, ModuleLeavesTheSlotsOfTheBundlesAlone) {
  for (const Bundle& bundle : family::bundles()) {
    bundle.do_register(second);
  }
  fwe_ui_wayfind_bundle_handler_register(first);
  for (const Bundle& bundle : family::bundles()) {
    EXPECT_EQ(*bundle.schema().registered, second) << bundle.name();
  }
  fwe_ui_wayfind_bundle_handler_unregister();
  for (const Bundle& bundle : family::bundles()) {
    EXPECT_EQ(*bundle.schema().registered, second) << bundle.name();
  }
}

TEST_F(Registration, BundleSlotsArePlainStoresOfTheirOwn) {
  const spy::Log log;
  for (const Bundle& bundle : family::bundles()) {
    EXPECT_EQ(*bundle.schema().registered, nullptr);
    EXPECT_EQ(bundle.do_register(first), nullptr);
    EXPECT_EQ(*bundle.schema().registered, first);
    EXPECT_EQ(bundle.do_register(second), first);
    EXPECT_EQ(*bundle.schema().registered, second);
    for (const Bundle& other : family::bundles()) {
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
