#include "tools/wayfind/data/message_list.h"

#include "tools/common/failure.h"

namespace wayfind {

void* MessageList::add() {
  void*& place = messages_.emplace_back(nullptr);
  place = type_.create(handle_, ORK_NO_INSTANCE);
  if (place == nullptr)
    throw Failure("no memory for one more " + std::string(type_.schema->name) + "; use less data");
  return place;
}

}  // namespace wayfind
