#include "tools/wayfind/agent/live_interfaces.h"

#include <linux/if.h>
#include <netlink/netlink.h>
#include <netlink/route/link.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "fwe_ui_wayfind/fwe_cl_wayfind_intf_data.h"
#include "tools/common/failure.h"

namespace wayfind {
namespace {

struct NetlinkFreed {
  void operator()(nl_sock* socket) const { nl_socket_free(socket); }
  void operator()(nl_cache* cache) const { nl_cache_free(cache); }
};

void expect_netlink(int result) {
  if (result < 0)
    throw Failure(std::string("cannot read this host's interfaces: ") + nl_geterror(result));
}

std::unique_ptr<nl_cache, NetlinkFreed> kernel_links() {
  const std::unique_ptr<nl_sock, NetlinkFreed> socket(nl_socket_alloc());
  if (!socket) throw Failure("cannot read this host's interfaces: no memory");
  expect_netlink(nl_connect(socket.get(), NETLINK_ROUTE));
  nl_cache* cache = nullptr;
  expect_netlink(rtnl_link_alloc_cache(socket.get(), AF_UNSPEC, &cache));
  return std::unique_ptr<nl_cache, NetlinkFreed>(cache);
}

// Selection counts as on when the interface is up, both directions as on when it also has a
// carrier.
void fill(ork_handle* handle, fwe_cl_wayfind_intf_data* record, rtnl_link* link) {
  const unsigned flags = rtnl_link_get_flags(link);
  const uint32_t up = (flags & IFF_UP) != 0;
  const uint32_t running = up != 0 && (flags & IFF_LOWER_UP) != 0;
  const char* name = rtnl_link_get_name(link);
  constexpr uint32_t none = ORK_NO_INSTANCE;
  uint32_t err = 0;
  fwe_cl_wayfind_intf_data_fwe_if_h_set_value(
      handle, none, record, static_cast<uint32_t>(rtnl_link_get_ifindex(link)), &err);
  fwe_cl_wayfind_intf_data_if_name_set(handle, none, record, name,
                                       static_cast<uint32_t>(std::strlen(name)), &err);
  fwe_cl_wayfind_intf_data_sel_enabled_set_value(handle, none, record, up, &err);
  fwe_cl_wayfind_intf_data_ingress_smp_enabled_set_value(handle, none, record, running, &err);
  fwe_cl_wayfind_intf_data_egress_smp_enabled_set_value(handle, none, record, running, &err);
  expect_done(err, std::string("interface ") + name);
}

}  // namespace

void read_live_interfaces(DataFolder& data, const Subject& subject) {
  if (subject.name != "intf") return;
  const MessageType& type = *find_message_type("fwe_cl_wayfind_intf_data_msg");
  const auto cache = kernel_links();
  auto list = std::make_shared<MessageList>(data.handle(), type);
  for (nl_object* at = nl_cache_get_first(cache.get()); at != nullptr; at = nl_cache_get_next(at)) {
    void* message = list->add();
    fill(data.handle(),
         static_cast<fwe_cl_wayfind_intf_data*>(type.record(data.handle(), message, 0)),
         reinterpret_cast<rtnl_link*>(at));
  }
  data.replace(*type.schema, std::move(list));
}

}  // namespace wayfind
