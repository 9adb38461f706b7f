#include "bundle.h"

#include <cerrno>
#include <cstring>

#include "guard.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {
namespace {

// The link is the first member of each entry.
template <typename Entry>
Entry* entry_at(ork_list_head* link) {
  return reinterpret_cast<Entry*>(link);
}

void take_out(ork_list_head& entry) {
  entry.prev->next = entry.next;
  entry.next->prev = entry.prev;
}

bool same_luid(const uint8_t* a, const uint8_t* b) { return std::memcmp(a, b, ORK_LUID_SIZE) == 0; }

// Null luid ends the table.
const ork_bundle_message_row* row_of(const ork_bundle_message_row* table, const uint8_t* luid) {
  for (const ork_bundle_message_row* row = table; row != nullptr && row->luid != nullptr; ++row) {
    if (same_luid(row->luid, luid)) {
      return row;
    }
  }
  return nullptr;
}

SentMessage* sent_message(ork_list_head& list, const uint8_t* luid) {
  for (ork_list_head* link = list.next; link != &list; link = link->next) {
    auto* sent = entry_at<SentMessage>(link);
    if (same_luid(sent->luid, luid)) {
      return sent;
    }
  }
  return nullptr;
}

// The message goes too, unless it was taken.
void destroy_member(ork_handle* handle, uint32_t instance, ork_bundle_member* member) {
  take_out(member->link);
  if (member->message != nullptr) {
    member->entry.destroy(handle, instance, member->message);
  }
  delete member;
  runtime(handle).storage->discharge(member_cost);
}

}  // namespace

void append(ork_list_head& list, ork_list_head& entry) {
  entry.next = &list;
  entry.prev = list.prev;
  list.prev->next = &entry;
  list.prev = &entry;
}

}  // namespace ork

extern "C" {

// One that may stand once is refused only after a frame with it was finished: a frame that failed
// may be tried again.
ORK_EXPORT void bundle_message_validate_add(struct ork_handle* handle, uint32_t,
                                            const uint8_t* luid, const char*, uint32_t* err) {
  ork::guarded(err, [&] {
    const ork_bundle_message_row* row = ork::row_of(handle->bundle_table, luid);
    if (row == nullptr) {
      ork::fail(handle, err, ENOENT);
      return;
    }
    const ork::SentMessage* sent = ork::sent_message(handle->bundle_send_list, luid);
    if (sent == nullptr) {
      ork::append(handle->bundle_send_list, (new ork::SentMessage{{}, row->luid, 0})->link);
    } else if (row->repeatable == 0 && sent->written > 0) {
      ork::fail(handle, err, EEXIST);
    }
  });
}

ORK_EXPORT void bundle_message_increment_count(struct ork_handle* handle, const uint8_t* luid,
                                               uint32_t* err) {
  if (*err != 0) {
    return;
  }
  if (ork::SentMessage* sent = ork::sent_message(handle->bundle_send_list, luid)) {
    sent->written += 1;
  } else {
    ork::fail(handle, err, ENOENT);
  }
}

ORK_EXPORT void bundle_send_message_list_destroy(struct ork_handle* handle, uint32_t, uint32_t*) {
  ork_list_head& list = handle->bundle_send_list;
  while (list.next != &list) {
    auto* sent = ork::entry_at<ork::SentMessage>(list.next);
    ork::take_out(sent->link);
    delete sent;
  }
  handle->bundle_table = nullptr;
  handle->bundle_ctx = 0;
}

ORK_EXPORT uint32_t orklib_is_accumulating_bundle(struct ork_handle* handle) {
  return handle->bundle_rx_active;
}

ORK_EXPORT void bundle_receive_message_list_destroy(struct ork_handle* handle, uint32_t instance,
                                                    uint32_t*) {
  ork_list_head& list = handle->bundle_receive_list;
  while (list.next != &list) {
    ork::destroy_member(handle, instance, ork::entry_at<ork_bundle_member>(list.next));
  }
  handle->bundle_rx_active = 0;
}

ORK_EXPORT struct ork_bundle_member* ork_bundle_next(struct ork_handle* handle,
                                                     const struct ork_bundle_member* previous) {
  ork_list_head& list = handle->bundle_receive_list;
  ork_list_head* next = previous != nullptr ? previous->link.next : list.next;
  return next != &list ? ork::entry_at<ork_bundle_member>(next) : nullptr;
}

ORK_EXPORT const struct ork_bundle_dispatch_info* ork_bundle_member_info(
    const struct ork_bundle_member* member) {
  return &member->entry.info;
}

ORK_EXPORT void* ork_bundle_member_message(const struct ork_bundle_member* member) {
  return member->message;
}

ORK_EXPORT void* ork_bundle_member_take(struct ork_bundle_member* member) {
  void* message = member->message;
  member->message = nullptr;
  return message;
}

ORK_EXPORT uint32_t orklib_suppress_messages_enabled(struct ork_handle* handle) {
  return ork::runtime(handle).suppress_messages ? 1 : 0;
}

}  // extern "C"
