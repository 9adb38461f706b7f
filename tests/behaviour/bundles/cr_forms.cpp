// The cr forms of control messages that have a body in common with a plain form, and the sentinels.
#include <dlfcn.h>

#include <set>

#include "behaviour/bundles/by_hand.h"
#include "behaviour/messages/spied.h"

namespace {

using messages::Bundle;
using messages::Control;
using kit::Handle;
using messages::Kind;

constexpr uint32_t instance = 9;
constexpr uint32_t room = 256;

struct Form {
  const char* what;
  uint32_t (*hand)(const Bundle&, Kind, ork_handle*, char* buffer, uint32_t* err);
  uint32_t (*library)(const Control&, ork_handle*, char* buffer);
};

uint8_t* bytes(char* buffer) { return reinterpret_cast<uint8_t*>(buffer); }

const Form forms_in_common[] = {
    {"marshal",
     [](const Bundle& b, Kind kind, ork_handle* handle, char* buffer, uint32_t* err) {
       return by_hand::marshal(b, kind, handle, instance, bytes(buffer), room, err);
     },
     [](const Control& c, ork_handle* handle, char* buffer) {
       return c.marshal_cr(handle, bytes(buffer), room);
     }},
    {"print",
     [](const Bundle& b, Kind kind, ork_handle* handle, char* buffer, uint32_t* err) {
       return by_hand::print(b, kind, handle, instance, buffer, room, err);
     },
     [](const Control& c, ork_handle* handle, char* buffer) {
       return c.print_cr(handle, buffer, room);
     }},
    {"toxml",
     [](const Bundle& b, Kind kind, ork_handle* handle, char* buffer, uint32_t* err) {
       return by_hand::to_xml(b, kind, handle, instance, buffer, room, err);
     },
     [](const Control& c, ork_handle* handle, char* buffer) {
       return c.toxml_cr(handle, buffer, room);
     }},
};

class CrForms : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();

  struct Done {
    std::vector<std::string> calls;
    uint32_t result;
    std::string buffer;
  };
  Done run(const Form& form, Kind kind, bool library) const {
    const Handle handle([](ork_options& options) { options.cr_instance = instance; });
    if (kind != messages::start) {
      messages::open(bundle, handle.get());
    }
    std::string buffer(room, '\0');
    uint32_t err = 0;
    spy::forget_names();
    spy::name(buffer.data(), room, "buffer");
    spy::name_at(library ? &handle->cr_error : &err, "cr_error");
    Done done{};
    {
      const spy::Log log;
      done.result = library ? form.library(bundle.control(kind), handle.get(), buffer.data())
                            : form.hand(bundle, kind, handle.get(), buffer.data(), &err);
      done.calls = log.calls();
    }
    done.buffer = buffer;
    messages::close(handle.get());
    return done;
  }
};

TEST_P(CrForms, do_the_same_with_the_handles_instance_and_error) {
  for (const Kind kind : {messages::start, messages::abort, messages::commit}) {
    for (const Form& form : forms_in_common) {
      const Done made = run(form, kind, true);
      const Done hand = run(form, kind, false);
      EXPECT_CALLS(made.calls, hand.calls) << form.what << " " << kind;
      EXPECT_EQ(made.result, hand.result) << form.what << " " << kind;
      EXPECT_EQ(made.buffer, hand.buffer) << form.what << " " << kind;
    }
    std::vector<std::string> sent = {"ork_clear_last_error()",
                                     "_ork_message_header_marshal(9,buffer,?,27,cr_error)"};
    if (kind != messages::start) {
      sent.emplace_back("bundle_send_message_list_destroy(9,cr_error)");
    }
    EXPECT_CALLS(run(forms_in_common[0], kind, true).calls, sent);
  }
}

INSTANTIATE_TEST_SUITE_P(All, CrForms, testing::ValuesIn(messages::bundles()), messages::ByName());

class ControlCreateCr : public testing::TestWithParam<Control> {
 protected:
  const Control control = GetParam();
  const Handle handle;

  void* sentinel() const {
    const uint32_t before = std::exchange(handle->cr_error, 5);
    void* const given = control.create_cr(handle.get());
    handle->cr_error = before;
    return given;
  }
};

TEST_P(ControlCreateCr, leaves_cr_active_alone) {
  for (const uint32_t active : {0u, 1u, 256u}) {
    handle->cr_active = active;
    const auto look = spy::replace(
        ork_store_err, [&](ork_handle*, uint32_t) { EXPECT_EQ(handle->cr_active, active); });
    void* const msg = control.create_cr(handle.get());
    EXPECT_EQ(handle->cr_active, active);
    control.destroy_cr(handle.get(), msg);
    ork_handle_fail_allocation(handle.get(), 1);
    EXPECT_EQ(control.create_cr(handle.get()), sentinel());
    EXPECT_EQ(handle->cr_active, active);
    EXPECT_EQ(std::exchange(handle->cr_error, 0), 12u);
  }
}

// An allocator may report for itself.
TEST_P(ControlCreateCr, error_that_the_allocator_left_stands) {
  static ork_handle* failing;
  failing = handle.get();
  const ork_alloc_fn before = std::exchange(handle->alloc_fn, [](void*, uint32_t, size_t) -> void* {
    failing->cr_error = 5;
    return nullptr;
  });
  const spy::Log log;
  EXPECT_EQ(control.create_cr(handle.get()), sentinel());
  EXPECT_EQ(log.count("ork_store_err"), 0u);
  EXPECT_EQ(handle->cr_error, 5u);
  EXPECT_EQ(ork_handle_last_error(handle.get()), 0u);
  handle->alloc_fn = before;
}

// Only the cr form knows the sentinel.
TEST_P(ControlCreateCr, plain_destroy_gives_whatever_is_not_null_to_free) {
  static std::vector<const void*> freed;
  freed.clear();
  const ork_free_fn before =
      std::exchange(handle->free_fn, [](void*, uint32_t, void* block) { freed.push_back(block); });
  void* const msg = sentinel();
  control.destroy_cr(handle.get(), msg);
  EXPECT_TRUE(freed.empty());
  control.destroy(handle.get(), instance, msg);
  EXPECT_EQ(freed, std::vector<const void*>{msg});
  handle->free_fn = before;
}

INSTANTIATE_TEST_SUITE_P(All, ControlCreateCr, testing::ValuesIn(messages::controls()),
                         messages::ByName());

TEST(ControlSentinels, each_control_message_has_one_of_its_own_in_the_library) {
  const Handle handles[] = {Handle(), Handle()};
  handles[0]->cr_error = handles[1]->cr_error = 5;
  std::set<const void*> found;
  for (const Control& control : messages::controls()) {
    const void* const sentinel = control.create_cr(handles[0].get());
    EXPECT_EQ(control.create_cr(handles[1].get()), sentinel) << control.name();
    Dl_info place{};
    Dl_info function{};
    ASSERT_NE(dladdr(sentinel, &place), 0) << control.name();
    dladdr(reinterpret_cast<const void*>(control.unmarshal_function()), &function);
    EXPECT_EQ(place.dli_fbase, function.dli_fbase) << control.name();
    found.insert(sentinel);
  }
  EXPECT_EQ(found.size(), 54u);
  handles[0]->cr_error = handles[1]->cr_error = 0;
}

}  // namespace
