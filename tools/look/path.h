// Paths to values in a message: "hop_chan.dst_site_id", "path.path_id[*]", "policy[0].policy_seq".
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tools/look/message.h"
#include "tools/look/word.h"

namespace look {

// A field on the way; of an array one element or each of them.
struct Step {
  const wayfind_field* field;
  bool every = false;
  uint32_t index = 0;
};

struct Path {
  unsigned slot = 0;  // the record of the message
  std::vector<Step> steps;
  std::string text;  // as it was written

  const wayfind_field& leaf() const { return *steps.back().field; }
  // Whether it may lead to several values.
  bool is_many() const;
};

// Why a text is no path in a message.
struct NoPath {
  size_t position;  // in the text
  std::string problem;
  std::string word;                // what was not found; empty when something else is wrong
  std::vector<std::string> names;  // what could stand in its place
};

// Looks for the path's first name in the records of the message, in wire order. A record's own name
// may stand in front of it.
std::variant<Path, NoPath> resolve(std::string_view text, const wayfind_message& message);

// Those of the messages that have all the paths. Throws a Mistake when none has.
using Messages = std::vector<const wayfind_message*>;
Messages with_paths(const std::vector<Word>& paths, const Messages& messages);

// The path, which the message has.
Path path_in(std::string_view text, const wayfind_message& message);

namespace detail {
template <class Visit>
bool any_value(const Step* step, const Step* end, const Object& in, const Visit& visit) {
  if (!holds(in, *step->field)) return false;
  const auto go_on = [&](const Value& value) {
    return step + 1 == end ? visit(value) : any_value(step + 1, end, object(value), visit);
  };
  if (!is_array(*step->field)) return go_on(value(in, *step->field));
  const Elements all = elements(in, *step->field);
  if (!step->every) return step->index < all.count && go_on(all[step->index]);
  for (uint32_t i = 0; i < all.count; ++i) {
    if (go_on(all[i])) return true;
  }
  return false;
}
}  // namespace detail

// Calls visit with the values that the path leads to, until it returns true; says whether it did.
// There is none past the object's variant or an array's end.
template <class Visit>
bool any_value(const Path& path, const Message& message, const Visit& visit) {
  const Step* first = path.steps.data();
  return detail::any_value(first, first + path.steps.size(), message.record(path.slot), visit);
}

}  // namespace look
