// What the handle shows while a control message is handled: each of its members changes at a place
// of its own.
#include "behaviour/messages/spied.h"

namespace {

using messages::Bundle;
using kit::Handle;
using messages::Kind;

constexpr uint32_t instance = 7;

// One look at the receiving side.
struct Look {
  std::string where;
  const void* dispatch;
  const void* lut;
  const void* commit;
  bool active;
  bool list_empty;

  bool operator==(const Look&) const = default;
};

void PrintTo(const Look& look, std::ostream* out) {
  *out << look.where << ": " << spy::symbol(look.dispatch) << " " << spy::symbol(look.lut) << " "
       << spy::symbol(look.commit) << (look.active ? " active" : " idle")
       << (look.list_empty ? " empty" : " full");
}

int new_lut;
int stale_lut;
const ork_bundle_dispatch_info stale_start{};
const ork_bundle_dispatch_info stale_commit{};
const ork_bundle_dispatch_info found{nullptr, "the row", nullptr, nullptr, nullptr};
ork_list_head stale_entry;
std::vector<Look> looks;

void look(const std::string& where, const ork_handle* handle) {
  const ork_list_head& list = handle->bundle_receive_list;
  looks.push_back({where, handle->bundle_rx_dispatch, handle->bundle_rx_lut,
                   handle->bundle_commit_dispatch, handle->bundle_rx_active != 0,
                   list.next == &list && list.prev == &list});
}

class ReceiveSteps : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();

  // What is seen at each stop on the way, from a handle that holds something else in each member.
  std::vector<Look> seen(Kind kind, uint32_t err, bool active, bool in_dispatch,
                         bool empty = true) const {
    const Handle handle;
    looks.clear();
    spy::forget_names();
    spy::name_at(&new_lut, "new lut");
    spy::name_at(&stale_lut, "stale lut");
    spy::name_at(&stale_start, "stale start");
    spy::name_at(&stale_commit, "stale commit");
    spy::name_at(&found, "found");
    spy::observe(handle.get());
    handle->bundle_rx_active = active ? 1 : 0;
    handle->bundle_rx_dispatch = &stale_start;
    handle->bundle_rx_lut = &stale_lut;
    handle->bundle_commit_dispatch = &stale_commit;
    handle->bundle_handler = [](ork_handle* own, uint32_t, void*, uint32_t*) {
      look("handler", own);
    };
    ork_list_head& list = handle->bundle_receive_list;
    if (!empty) {
      list = {&stale_entry, &stale_entry};
    }
    const auto asked =
        spy::replace(orklib_in_dispatch_message_info, [&](ork_handle* own, void** lut) {
          look("info", own);
          if (lut != nullptr) {
            *lut = &new_lut;
          }
          return in_dispatch ? &found : nullptr;
        });
    const auto dropped = spy::replace(
        bundle_receive_message_list_destroy, [](ork_handle* own, uint32_t each, uint32_t* slot) {
          look("list", own);
          spy::next(bundle_receive_message_list_destroy)(own, each, slot);
        });
    void* const msg = handle->alloc_fn(handle->mem_pool, instance, 0);
    spy::Log log;
    log.on_free = [&](const void* block) {
      EXPECT_EQ(block, msg);
      look("free", handle.get());
    };
    bundle.control(kind).handle_message(handle.get(), instance, nullptr, msg, &err);
    look("end", handle.get());
    list = {&list, &list};
    spy::forget(handle.get());
    return looks;
  }
  static Look as_before(const char* where, bool active = true, const void* commit = &stale_commit) {
    return {where, &stale_start, &stale_lut, commit, active, true};
  }
  static Look cleared(const char* where) { return {where, nullptr, nullptr, nullptr, false, true}; }
};

TEST_P(ReceiveSteps, start_is_active_with_an_empty_list_before_it_asks_for_the_dispatch) {
  for (const bool in_dispatch : {true, false}) {
    const void* const dispatch = in_dispatch ? &found : nullptr;
    EXPECT_EQ(seen(messages::start, 0, false, in_dispatch, false),
              (std::vector<Look>{as_before("info"),
                                 {"free", dispatch, &new_lut, nullptr, true, true},
                                 {"end", dispatch, &new_lut, nullptr, true, true}}));
  }
}

TEST_P(ReceiveSteps, abort_forgets_the_dispatch_after_list_and_question_and_before_the_message) {
  for (const uint32_t err : {0u, 5u}) {
    for (const bool active : {true, false}) {
      for (const bool in_dispatch : {true, false}) {
        EXPECT_EQ(seen(messages::abort, err, active, in_dispatch),
                  (std::vector<Look>{as_before("list", active), as_before("info", false),
                                     cleared("free"), cleared("end")}));
      }
    }
  }
}

TEST_P(ReceiveSteps, commit_keeps_its_dispatch_beside_the_starts_until_the_message_is_freed) {
  EXPECT_EQ(seen(messages::commit, 0, true, true),
            (std::vector<Look>{as_before("info"), as_before("handler", true, &found),
                               as_before("list", true, &found), as_before("free", false, &found),
                               cleared("end")}));
}

TEST_P(ReceiveSteps, commit_that_finds_no_dispatch_leaves_the_members_until_its_end) {
  EXPECT_EQ(seen(messages::commit, 0, true, false),
            (std::vector<Look>{as_before("info"), as_before("list"), as_before("free", false),
                               cleared("end")}));
  for (const bool active : {true, false}) {
    EXPECT_EQ(
        seen(messages::commit, 5, active, true),
        (std::vector<Look>{as_before("list", active), as_before("free", false), cleared("end")}));
  }
  EXPECT_EQ(
      seen(messages::commit, 0, false, true),
      (std::vector<Look>{as_before("list", false), as_before("free", false), cleared("end")}));
}

// The answer is a word of 32 bits: any but 0 means an open bundle.
TEST_P(ReceiveSteps, any_answer_but_zero_means_an_open_bundle) {
  const auto accumulating = spy::answer(orklib_is_accumulating_bundle, 256);
  const Handle handle;
  for (const auto& [kind, expected] :
       {std::pair(messages::start, 17u), {messages::abort, 0u}, {messages::commit, 0u}}) {
    uint32_t err = 0;
    bundle.control(kind).handle_message(handle.get(), instance, nullptr, nullptr, &err);
    EXPECT_EQ(err, expected) << bundle.control(kind).name();
    EXPECT_EQ(handle->bundle_rx_active, 0u);
  }
}

INSTANTIATE_TEST_SUITE_P(All, ReceiveSteps, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

}  // namespace
