#include "tools/look/selection.h"

#include <algorithm>

#include "tools/look/mistake.h"

namespace look {
namespace {

template <class Add>
void wish(const char* option, const std::string& text, const Messages& messages, const Add& add) {
  if (text.empty()) return;
  try {
    if (messages.empty())
      throw Mistake(0, "no message of this show may repeat, so there is nothing to select among");
    add();
  } catch (const Mistake& mistake) {
    throw Mistake(option, mistake);
  }
}

// That all fields of the message's key have their values.
Filter key_filter(const wayfind_message& message, std::span<const char* const> key,
                  const std::vector<Word>& values) {
  Expression whole{Expression::Kind::all, {}};
  for (size_t i = 0; i < key.size(); ++i) {
    const bool is_text = path_in(key[i], message).leaf().kind == WAYFIND_CHAR;
    const Token::Kind kind = is_text ? Token::Kind::quoted : Token::Kind::word;
    Comparison comparison{
        {Token::Kind::word, 0, key[i]}, "==", 0, {kind, values[i].position, values[i].text}};
    whole.parts.push_back({Expression::Kind::comparison, {}, std::move(comparison)});
  }
  return {whole, message};
}

std::string told_key(const wayfind_message& message, std::span<const char* const> key) {
  std::string told = std::string("; that of ") + message.name + " is ";
  if (key.empty()) return told + "none";
  for (size_t i = 0; i < key.size(); ++i) told += (i == 0 ? "" : ",") + std::string(key[i]);
  return told;
}

}  // namespace

Selection::Selection(const wayfind_bundle& bundle, const Wishes& wishes, const Roles& roles)
    : bundle_(bundle), limit_(wishes.limit) {
  for (unsigned i = 0; i < bundle.member_count; ++i) {
    if (bundle.members[i].repeatable != 0) messages_.push_back(bundle.members[i].message);
  }
  wish("--id", wishes.id, messages_, [&] { add_id(wishes.id, roles); });
  wish("--where", wishes.where, messages_, [&] { add_where(wishes.where); });
  wish("--sort", wishes.sort, messages_, [&] {
    order_.emplace(wishes.sort, messages_);
    messages_ = order_->messages();
  });
}

void Selection::add_where(const std::string& where) {
  const Expression expression = parse_expression(where);
  messages_ = with_paths(paths_of(expression), messages_);
  for (const wayfind_message* message : messages_)
    filters_[message].emplace_back(expression, *message);
}

void Selection::add_id(const std::string& id, const Roles& roles) {
  const std::vector<Word> values = split(id);
  Messages kept;
  std::optional<Mistake> refused;
  std::string keys;
  for (const wayfind_message* message : messages_) {
    const std::span<const char* const> key = roles.key(*message);
    keys += told_key(*message, key);
    if (key.size() != values.size()) continue;
    try {
      filters_[message].push_back(key_filter(*message, key, values));
      kept.push_back(message);
    } catch (const Mistake& mistake) {
      refused.emplace(mistake);
    }
  }
  if (kept.empty() && refused) throw Mistake(*refused);
  if (kept.empty()) throw Mistake(0, "no key has so many fields" + keys);
  messages_ = kept;
}

bool Selection::repeats(const Message& message) const {
  const wayfind_member* member = member_of(bundle_, *message.type);
  return member != nullptr && member->repeatable != 0;
}

bool Selection::takes(const Message& message) const {
  if (std::find(messages_.begin(), messages_.end(), message.type) == messages_.end()) return false;
  const auto found = filters_.find(message.type);
  return found == filters_.end() ||
         std::all_of(found->second.begin(), found->second.end(),
                     [&](const Filter& filter) { return filter.takes(message); });
}

std::vector<Message> Selection::of(const std::vector<Message>& shown) const {
  std::map<const wayfind_message*, std::vector<Message>> taken;
  std::vector<const Message*> places;  // of those that go out, whatever comes to stand there
  for (const Message& message : shown) {
    const bool is_taken = repeats(message) && takes(message);
    if (is_taken) taken[message.type].push_back(message);
    if (is_taken || !repeats(message)) places.push_back(&message);
  }
  std::map<const wayfind_message*, size_t> next;
  if (order_) {
    for (auto& [type, messages] : taken) order_->sort(messages);
  }
  std::vector<Message> selected;
  uint64_t left = limit_.value_or(shown.size());
  for (const Message* place : places) {
    if (!repeats(*place)) {
      selected.push_back(*place);
    } else if (left > 0) {
      selected.push_back(taken[place->type][next[place->type]++]);
      --left;
    }
  }
  return selected;
}

size_t Selection::count(const std::vector<Message>& shown) const {
  return static_cast<size_t>(std::count_if(
      shown.begin(), shown.end(), [&](const Message& message) { return repeats(message); }));
}

}  // namespace look
