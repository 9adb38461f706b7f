#include "tools/look/order.h"

#include <algorithm>
#include <tuple>

#include "tools/look/mistake.h"
#include "tools/look/test.h"

namespace look {
namespace {

// Sorts as the value does: a number by itself, a text by its bytes, an address by its family, its
// bytes and its length.
struct Rank {
  bool is_there = false;
  uint64_t number = 0;
  std::string_view bytes;
  uint8_t length = 0;

  bool operator<(const Rank& other) const {
    return std::tie(number, bytes, length) < std::tie(other.number, other.bytes, other.length);
  }
};

Rank rank_of(const Value& value) {
  if (value.field->kind == WAYFIND_CHAR) return {true, 0, text(value), 0};
  if (value.field->kind != WAYFIND_IP_ADDRESS) return {true, number(value), {}, 0};
  const ork_ip_address& from = address(value);
  const auto* bytes = reinterpret_cast<const char*>(from.address);
  return {true, from.family, {bytes, sizeof from.address}, from.prefix_length};
}

Rank rank_of(const Path& path, const Message& message) {
  Rank rank;
  any_value(path, message, [&](const Value& value) {
    rank = rank_of(value);
    return true;
  });
  return rank;
}

void expect_one_value(const Path& path, size_t position) {
  if (path.is_many())
    throw Mistake(position, path.text + " leads to many values; write an index in place of *");
  if (path.leaf().kind == WAYFIND_FLAG_SET)
    throw Mistake(position, path.text + " is flags, which have no order");
}

}  // namespace

Order::Order(std::string_view path, const Messages& messages)
    : text_(path), is_descending_(path.starts_with('-')) {
  if (is_descending_) text_.erase(0, 1);
  const size_t position = is_descending_ ? 1 : 0;
  messages_ = with_paths({{position, text_}}, messages);
  for (const wayfind_message* message : messages_)
    expect_one_value(path_in(text_, *message), position);
}

void Order::sort(std::vector<Message>& of_one_type) const {
  if (of_one_type.empty()) return;
  const Path path = path_in(text_, *of_one_type.front().type);
  std::vector<std::pair<Rank, Message>> ranked;
  ranked.reserve(of_one_type.size());
  for (const Message& message : of_one_type) ranked.emplace_back(rank_of(path, message), message);
  std::stable_sort(ranked.begin(), ranked.end(), [&](const auto& a, const auto& b) {
    if (a.first.is_there != b.first.is_there) return a.first.is_there;
    return is_descending_ ? b.first < a.first : a.first < b.first;
  });
  of_one_type.clear();
  for (const auto& [rank, message] : ranked) of_one_type.push_back(message);
}

}  // namespace look
