// Which messages of a show are shown, and in which order.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/look/filter.h"
#include "tools/look/order.h"
#include "tools/look/roles.h"

namespace look {

// What was asked for; empty texts ask for nothing.
struct Wishes {
  std::string where = {};  // an expression
  std::string sort = {};   // a path
  std::string id = {};     // the values of the key's fields, with commas between them
  std::optional<uint64_t> limit = {};
};

// Selects among the messages that may repeat in a show. Those that a show has once are never
// dropped, moved or counted.
class Selection {
 public:
  // Throws a Mistake that names the option, when a wish cannot be met.
  Selection(const wayfind_bundle& bundle, const Wishes& wishes, const Roles& roles);

  // Of the messages of a show, in wire order.
  std::vector<Message> of(const std::vector<Message>& shown) const;

  // How many of the messages may repeat.
  size_t count(const std::vector<Message>& shown) const;

 private:
  bool repeats(const Message& message) const;
  bool takes(const Message& message) const;
  void add_where(const std::string& where);
  void add_id(const std::string& id, const Roles& roles);
  const wayfind_bundle& bundle_;
  Messages messages_;  // that are selected from
  std::map<const wayfind_message*, std::vector<Filter>> filters_;
  std::optional<Order> order_;
  std::optional<uint64_t> limit_;
};

}  // namespace look
