// A program that defines half of the functions which a process may define, to be called by the
// library: they run, and for the other half the paths without a handler do. Built twice, once for
// each half.
#include <map>

#include "behaviour/messages/spied.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"

namespace {

struct Call {
  std::string who;
  ork_handle* handle;
  uint32_t instance;
  void* ctx;
  void* msg;
  uint32_t* err;
};
std::vector<Call> calls;

}  // namespace

#define TAKES_MESSAGE(message)                                                      \
  extern "C" void fwe_ui_wayfind_##message##_message_handler(                       \
      ork_handle* handle, uint32_t instance, void* ctx, void* msg, uint32_t* err) { \
    calls.push_back({#message, handle, instance, ctx, msg, err});                   \
  }
#define TAKES_BUNDLE(bundle)                                                                      \
  extern "C" void fwe_ui_wayfind_##bundle##_bundle_handler(ork_handle* handle, uint32_t instance, \
                                                           void* ctx, uint32_t* err) {            \
    calls.push_back({#bundle, handle, instance, ctx, nullptr, err});                              \
  }

#ifndef WAYFIND_LINKED_ODD

TAKES_MESSAGE(fwe_pal_wayfind_site_prefix_msg)
TAKES_MESSAGE(fwe_cl_wayfind_sitetohop_msg)
TAKES_MESSAGE(fwe_cl_wayfind_debug_msg)
TAKES_MESSAGE(fwe_cl_wayfind_color_msg)
TAKES_MESSAGE(fwe_cl_wayfind_global_state_msg)
TAKES_MESSAGE(fwe_cl_wayfind_global_show_type_msg)
TAKES_MESSAGE(fwe_cl_wayfind_auto_tunnel_show)
TAKES_MESSAGE(fwe_cl_wayfind_select_flow_msg)
TAKES_MESSAGE(fwe_cl_wayfind_nb_channel_msg)
TAKES_MESSAGE(fwe_cl_wayfind_enforce_hop_msg)
TAKES_MESSAGE(fwe_cl_wayfind_dcid_siteip_map_msg)
TAKES_MESSAGE(fwe_cl_wayfind_channel_state_msg)
TAKES_MESSAGE(fwe_cl_wayfind_hop_chan_state_msg)
TAKES_MESSAGE(fwe_cl_wayfind_intf_data_msg)

TAKES_BUNDLE(fwe_pal_wayfind_show_site_prefix_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_sitetohop_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_debug_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_global_new_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_selection_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_nb_channel_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_multi_nh_map_resp)
TAKES_BUNDLE(fwe_cl_wayfind_show_channel_response)
TAKES_BUNDLE(fwe_dp_wayfind_show_debug_response)

#else

TAKES_MESSAGE(fwe_cl_wayfind_prefixtosite_msg)
TAKES_MESSAGE(fwe_pal_wayfind_debug_msg)
TAKES_MESSAGE(fwe_cl_wayfind_global_info_msg)
TAKES_MESSAGE(fwe_cl_wayfind_inst_msg)
TAKES_MESSAGE(fwe_cl_wayfind_global_param_msg)
TAKES_MESSAGE(fwe_cl_wayfind_auto_tunnel_gstatus_show)
TAKES_MESSAGE(fwe_cl_wayfind_select_state_msg)
TAKES_MESSAGE(fwe_cl_wayfind_select_tc_msg)
TAKES_MESSAGE(fwe_cl_wayfind_nb_channel_state_msg)
TAKES_MESSAGE(fwe_cl_wayfind_multi_nh_map_msg)
TAKES_MESSAGE(fwe_cl_wayfind_channel_msg)
TAKES_MESSAGE(fwe_cl_wayfind_hop_chan_msg)
TAKES_MESSAGE(fwe_dp_wayfind_debug_msg)
TAKES_MESSAGE(fwe_cl_wayfind_intf_sum_msg)

TAKES_BUNDLE(fwe_cl_wayfind_show_prefixtosite_response)
TAKES_BUNDLE(fwe_pal_wayfind_show_debug_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_global_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_auto_tunnel_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_traffic_class_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_enforce_hop_resp)
TAKES_BUNDLE(fwe_cl_wayfind_show_dcid_siteip_map_resp)
TAKES_BUNDLE(fwe_cl_wayfind_show_hop_chan_response)
TAKES_BUNDLE(fwe_cl_wayfind_show_intf_response)

#endif

namespace {

using kit::Handle;
using messages::Bundle;
using messages::Message;

constexpr uint32_t instance = 7;

// Those above are the ones at even or at odd places of the tables.
#ifndef WAYFIND_LINKED_ODD
constexpr int linked_rest = 0;
#else
constexpr int linked_rest = 1;
#endif

template <class Family>
bool is_linked(const std::vector<Family>& all, const Family& one) {
  const auto found = std::find_if(all.begin(), all.end(), [&](const Family& each) {
    return std::string_view(each.name()) == one.name();
  });
  return (found - all.begin()) % 2 == linked_rest;
}

void explicit_handler(ork_handle* handle, uint32_t each, void* ctx, void* msg, uint32_t* err) {
  calls.push_back({"explicit", handle, each, ctx, msg, err});
}

class LinkedMessage : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();
  const Handle handle;
  uint32_t err = 0;
  int ctx = 0;

  const Handle sender;
  const std::vector<uint8_t> frame = messages::Made(message, sender.get()).frame();

  void SetUp() override { calls.clear(); }
  void* receive(ork_message_handler handler) {
    void* out = nullptr;
    EXPECT_EQ(message.unmarshal(handle.get(), instance, &ctx, &out, frame.data(),
                                static_cast<int32_t>(frame.size()), handler, &err),
              frame.size());
    return out;
  }
};

TEST_P(LinkedMessage, runs_if_it_is_there_and_else_thirty_eight) {
  void* msg;
  std::vector<std::string> traces;
  {
    const spy::Log log;
    msg = receive(nullptr);
    traces = log.calls_of({"trace"});
  }
  ASSERT_NE(msg, nullptr);
  if (is_linked(messages::all(), message)) {
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].who, message.name());
    EXPECT_EQ(calls[0].handle, handle.get());
    EXPECT_EQ(calls[0].instance, instance);
    EXPECT_EQ(calls[0].ctx, &ctx);
    EXPECT_EQ(calls[0].msg, msg);
    EXPECT_EQ(calls[0].err, &err);
    EXPECT_EQ(err, 0u);
    EXPECT_TRUE(traces.empty());
  } else {
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(err, 38u);
    EXPECT_CALLS(traces,
                 std::vector<std::string>{std::string("trace(info,default fwe_ui_wayfind_") +
                                          message.name() + "_message handler called)"});
  }
  message.destroy(handle.get(), instance, msg);
}

TEST_P(LinkedMessage, gives_way_to_the_handler_of_the_call) {
  void* msg = receive(explicit_handler);
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].who, "explicit");
  EXPECT_EQ(err, 0u);
  message.destroy(handle.get(), instance, msg);
}

INSTANTIATE_TEST_SUITE_P(All, LinkedMessage, testing::ValuesIn(messages::all()),
                         messages::ByName());

class LinkedBundle : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();
  const Handle handle;
  const ork_bundle_dispatch_info info{nullptr, "the row", nullptr, nullptr, nullptr};
  const spy::Replacement dispatching =
      spy::replace(orklib_in_dispatch_message_info, [this](ork_handle*, void** lut) {
        if (lut != nullptr) {
          *lut = nullptr;
        }
        return &info;
      });
  uint32_t err = 0;
  int ctx = 0;

  void SetUp() override { calls.clear(); }
  std::vector<std::string> commit() {
    handle->bundle_rx_active = 1;
    const spy::Log log;
    bundle.commit().unmarshal(handle.get(), instance, &ctx, nullptr, nullptr, 0, nullptr, &err);
    return log.calls_of({"trace"});
  }
};

void registered(ork_handle* own, uint32_t each, void* context, uint32_t* error) {
  calls.push_back({"registered", own, each, context, nullptr, error});
}

TEST_P(LinkedBundle, runs_as_the_last_of_the_chain) {
  const std::vector<std::string> traces = commit();
  EXPECT_EQ(err, 0u);
  if (is_linked(messages::bundles(), bundle)) {
    EXPECT_CALLS(traces, {"trace(debug,Invoking linked-in handler for the row)"});
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].who, bundle.name());
    EXPECT_EQ(calls[0].handle, handle.get());
    EXPECT_EQ(calls[0].instance, instance);
    EXPECT_EQ(calls[0].ctx, &ctx);
    EXPECT_EQ(calls[0].err, &err);
  } else {
    EXPECT_CALLS(traces, {"trace(error,Call to unimplemented handler for the row)"});
    EXPECT_TRUE(calls.empty());
  }
}

TEST_P(LinkedBundle, gives_way_to_a_registered_one) {
  bundle.do_register(registered);
  EXPECT_CALLS(commit(), {"trace(debug,Invoking registered bundle handler for the row)"});
  bundle.unregister();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].who, "registered");
}

TEST_P(LinkedBundle, is_looked_at_in_a_commit_alone) {
  bundle.start().unmarshal(handle.get(), instance, &ctx, nullptr, nullptr, 0, nullptr, &err);
  bundle.abort().unmarshal(handle.get(), instance, &ctx, nullptr, nullptr, 0, nullptr, &err);
  EXPECT_TRUE(calls.empty());
}

INSTANTIATE_TEST_SUITE_P(All, LinkedBundle, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

}  // namespace
