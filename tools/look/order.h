// Messages in the order of one of their values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/look/path.h"

namespace look {

class Order {
 public:
  // A path that leads to one value; a - in front of it turns the order around. Throws a Mistake
  // when none of the messages can be ordered by it.
  Order(std::string_view path, const Messages& messages);

  // The messages that have the path.
  const Messages& messages() const { return messages_; }

  // Equal values keep their order; messages without a value come last.
  void sort(std::vector<Message>& of_one_type) const;

 private:
  std::string text_;
  bool is_descending_;
  Messages messages_;
};

}  // namespace look
