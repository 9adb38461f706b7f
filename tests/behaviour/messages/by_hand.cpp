#include "behaviour/messages/by_hand.h"

#include <cerrno>

#include "fwe_ui_wayfind/module.h"
#include "ork/tawny.h"

namespace by_hand {

namespace {

// A message object seen through its own parts.
struct MessageBytes {
  explicit MessageBytes(void* msg) : bytes(static_cast<uint8_t*>(msg)) {}

  ork_message_header* header() const {
    return reinterpret_cast<ork_message_header*>(bytes + messages::header_offset);
  }
  void*& slot(size_t i) const {
    return reinterpret_cast<void**>(bytes + messages::records_offset)[i];
  }
  void set_type(const ork_type_info* type) const { std::memcpy(bytes, &type, sizeof type); }
  const ork_type_info* type() const {
    const ork_type_info* type;
    std::memcpy(&type, bytes, sizeof type);
    return type;
  }

  uint8_t* bytes;
};

size_t size_of(const Message& message) {
  return messages::records_offset + 8 * message.record_count();
}

ork_variant_entry& entry_of(const ork_type_info* type) { return type->varinfo->entries[0]; }

void store(ork_handle* handle, uint32_t number, uint32_t* err) {
  *err = number;
  ork_store_err(handle, number);
}

std::string error_text(const uint32_t* err) { return strerror(static_cast<int>(*err)); }

// What follows once the object is there and its records are.
void start(const Message& message, ork_handle* handle, uint32_t instance,
           const MessageBytes& object) {
  const ork_type_info* type = message.schema().type;
  if (handle->shared_types != 0) {
    type = ork_type_info_ptr_get(handle, instance, type, fwe_ui_wayfind_typeinfo_initialize);
  }
  object.set_type(type);
  if (type->varinfo->n_variants < 0) {
    trace("info", "variant 0 requested only " +
                      std::to_string(static_cast<uint32_t>(type->varinfo->n_variants)) +
                      " variants present");
  }
  handle->counter_notify_fn(handle->mem_pool, &entry_of(type).create_count, 1, instance);
  entry_of(type).create_count += 1;
  *object.header() = {0xBC, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 0, 0, 0};
  if (handle->sttr_info != nullptr && handle->sttr_info->sttr_mode == ORK_STTR_ON) {
    object.bytes[ORK_OFFSET_OBJ_FLAGS] |= OBJ_STATE_TRACKED;
    object.header()->sttr_marker = 1;
  }
}

}  // namespace

void trace(const std::string& level, const std::string& text) {
  spy::Recorder::call("trace(" + level + "," + text + ")");
}

void* create(const Message& message, ork_handle* handle, uint32_t instance) {
  void* block = handle->alloc_fn(handle->mem_pool, instance, size_of(message));
  if (block == nullptr) {
    return nullptr;
  }
  std::memset(block, 0, size_of(message));
  const MessageBytes object(block);
  for (size_t i = 0; i < message.record_count(); ++i) {
    tawny_set_callsite_tag(message.schema().call_site_tag + static_cast<uint32_t>(i));
    object.slot(i) = Record(message.record(i)).create(handle, instance);
    if (object.slot(i) == nullptr) {
      for (size_t made = 0; made < i; ++made) {
        Record(message.record(made)).destroy(handle, instance, object.slot(made));
      }
      handle->free_fn(handle->mem_pool, instance, block);
      return nullptr;
    }
  }
  start(message, handle, instance, object);
  return block;
}

void* create_shallow(const Message& message, ork_handle* handle, uint32_t instance) {
  void* block = handle->alloc_fn(handle->mem_pool, instance, size_of(message));
  if (block != nullptr) {
    std::memset(block, 0, size_of(message));
    start(message, handle, instance, MessageBytes(block));
  }
  return block;
}

void destroy(const Message& message, ork_handle* handle, uint32_t instance, void* msg) {
  if (msg == nullptr) {
    return;
  }
  const MessageBytes object(msg);
  for (size_t i = 0; i < message.record_count(); ++i) {
    if (object.slot(i) != nullptr) {
      Record(message.record(i)).destroy(handle, instance, object.slot(i));
      object.slot(i) = nullptr;
    }
  }
  const ork_type_info* type = object.type();
  if (type->varinfo->n_variants < 0) {
    trace("info", "variant 0 requested only " +
                      std::to_string(static_cast<uint32_t>(type->varinfo->n_variants)) +
                      " variants present");
  }
  handle->counter_notify_fn(handle->mem_pool, &entry_of(type).destroy_count, 1, instance);
  entry_of(type).destroy_count += 1;
  object.set_type(nullptr);
  handle->free_fn(handle->mem_pool, instance, msg);
}

uint32_t marshal(const Message& message, ork_handle* handle, uint32_t instance, uint8_t* buffer,
                 void* msg, int32_t length, uint32_t* err) {
  const wayfind_message& schema = message.schema();
  const MessageBytes object(msg);
  if (*err != 0) {
    trace("debug", "Error present in call to message marshal: " + error_text(err));
    return 0;
  }
  ork_clear_last_error(handle);
  if (ork_domain_lookup_message_ok(handle, &handle->domain, object.type(), err) == 0) {
    trace("error", std::string("domainfail: Message ") + schema.name + " (" + schema.luid_text +
                       ") is not allowed for the current domain (" + handle->domain_name + ")");
    ork_store_epoch_err(handle, 52, err);
    return 0;
  }
  if (handle->bundle_ctx != 0) {
    bundle_message_validate_add(handle, instance, schema.luid, schema.bundle_name, err);
    if (*err != 0) {
      trace("error",
            std::string("Message ") + schema.name + " is not valid for bundle: " + error_text(err));
      return 0;
    }
  } else if (*err != 0) {
    return 0;
  }
  uint8_t* header_slot = nullptr;
  int32_t offset = 0;
  if (length < messages::header_size) {
    store(handle, 90, err);
  } else {
    std::memset(buffer, 0, messages::header_size);
    offset = messages::header_size;
    header_slot = buffer;
  }
  if (*err == 0) {
    if (length - offset < messages::luid_size) {
      store(handle, 90, err);
    } else {
      std::memcpy(buffer + offset, schema.luid, messages::luid_size);
      offset += messages::luid_size;
    }
  }
  for (size_t i = 0; i < message.record_count(); ++i) {
    offset += static_cast<int32_t>(
        Record(message.record(i))
            .marshal(handle, instance, buffer + offset, object.slot(i), length - offset, err));
  }
  if (*err != 0) {
    const bool quiet = orklib_suppress_messages_enabled(handle) != 0;
    trace(quiet ? "debug" : "error",
          std::string("Message ") + schema.name + " failed to marshal: " + error_text(err));
    return static_cast<uint32_t>(offset);
  }
  if (handle->bundle_ctx != 0) {
    bundle_message_increment_count(handle, schema.luid, err);
    if (*err != 0) {
      trace("error", std::string("Message ") + schema.name + " instance is not present in bundle " +
                         error_text(err));
      return static_cast<uint32_t>(offset);
    }
  }
  object.header()->length = static_cast<uint32_t>(offset);
  object.header()->sequence = handle->send_sequence;
  _ork_message_header_marshal(handle, instance, header_slot, object.header(), messages::header_size,
                              err);
  return static_cast<uint32_t>(offset);
}

uint32_t unmarshal_only(const Message& message, ork_handle* handle, uint32_t instance, void** out,
                        const uint8_t* buffer, int32_t length, uint32_t* err) {
  if (*err != 0) {
    trace("debug", std::string("Error present in call to ") + message.name() +
                       " unmarshal: " + error_text(err));
    return 0;
  }
  ork_clear_last_error(handle);
  void* msg = create_shallow(message, handle, instance);
  if (msg == nullptr) {
    store(handle, 12, err);
    return 0;
  }
  const MessageBytes object(msg);
  uint32_t cursor = messages::luid_size;
  if (*err == 0) {
    cursor += _ork_message_header_unmarshal(handle, instance, buffer, object.header(), length, err);
  }
  for (size_t i = 0; i < message.record_count(); ++i) {
    const Record record(message.record(i));
    object.slot(i) = record.create_internal(handle, instance);
    if (object.slot(i) == nullptr) {
      store(handle, 12, err);
    }
    if (*err == 0) {
      cursor += record.unmarshal(handle, instance, buffer + cursor, object.slot(i),
                                 length - static_cast<int32_t>(cursor), err);
    }
  }
  *out = msg;
  return cursor;
}

namespace {

void record(const Message& message, ork_handle* handle, uint32_t instance, const void* msg) {
  constexpr uint32_t room = 0x10000;
  const std::string name = message.name();
  uint32_t rec_err = 0;
  auto* buffer = static_cast<char*>(orklib_malloc(nullptr, instance, room));
  uint32_t at = start_tag_timestamp(handle, instance, buffer, "fwe_ui_wayfind", room, &rec_err);
  if (rec_err == 0) {
    at += to_xml(message, handle, instance, buffer + at, msg, room - at, &rec_err);
  }
  if (rec_err == 0) {
    at += end_tag(handle, instance, buffer + at, "fwe_ui_wayfind", static_cast<int32_t>(room - at),
                  &rec_err);
  }
  if (rec_err == 0) {
    if (FILE* stream = orklib_msg_recorder_get_handle(); stream == nullptr) {
      trace("error", "ORK record - NULL file handle for message " + name);
    } else {
      std::fwrite(buffer, at, 1, stream);
    }
  }
  if (rec_err != 0) {
    trace("error", "Error " + std::to_string(rec_err) + " " + name +
                       " message not recorded, xml len " + std::to_string(at));
  }
  orklib_free(nullptr, instance, buffer);
  if (rec_err != 0) {
    trace("error", "Error " + std::to_string(rec_err) + " in recording " + name + " message");
  }
}

}  // namespace

uint32_t unmarshal(const Message& message, ork_handle* handle, uint32_t instance, void* ctx,
                   void** out, const uint8_t* buffer, int32_t length, ork_message_handler handler,
                   uint32_t* err) {
  if (*err != 0) {
    trace("debug", std::string("Error present in call to ") + message.name() +
                       " message unmarshal: " + error_text(err));
    return 0;
  }
  ork_clear_last_error(handle);
  if (out != nullptr) {
    *out = nullptr;
  }
  void* msg = nullptr;
  const uint32_t consumed = unmarshal_only(message, handle, instance, &msg, buffer, length, err);
  if (*err != 0) {
    return consumed;
  }
  if (out != nullptr) {
    *out = msg;
  }
  if (orklib_msg_recorder_get_state() != 0) {
    record(message, handle, instance, msg);
  }
  if (handler != nullptr) {
    handler(handle, instance, ctx, msg, err);
  } else {
    store(handle, 38, err);
    trace("info",
          std::string("default fwe_ui_wayfind_") + message.name() + "_message handler called");
  }
  return consumed;
}

uint32_t print(const Message& message, ork_handle* handle, uint32_t instance, char* buffer,
               const void* msg, uint32_t length, uint32_t* err) {
  if (*err != 0) {
    trace("debug", std::string("Already have error when printing ") + message.name() + ": " +
                       error_text(err));
    return 0;
  }
  ork_clear_last_error(handle);
  const auto room = [&](uint32_t at) { return static_cast<int32_t>(length - at); };
  uint32_t at = ork_print_space(handle, instance, buffer, 0, room(0), err);
  at +=
      ork_snprintf(handle, instance, buffer + at, room(at), err, "message@%s: {\n", message.name());
  for (size_t i = 0; i < message.record_count(); ++i) {
    if (*err != 0) {
      store(handle, 90, err);
      break;
    }
    at += Record(message.record(i))
              .print(handle, instance, buffer + at, 2, message.slots(msg)[i], length - at, err);
  }
  at += ork_print_space(handle, instance, buffer, 0, room(at), err);
  at += ork_snprintf(handle, instance, buffer + at, room(at), err, "}\n");
  return at;
}

uint32_t to_xml(const Message& message, ork_handle* handle, uint32_t instance, char* buffer,
                const void* msg, uint32_t length, uint32_t* err) {
  if (*err != 0) {
    trace("debug", std::string("Already have error when rendering XML for ") + message.name() +
                       ": " + error_text(err));
    return 0;
  }
  ork_clear_last_error(handle);
  uint32_t at =
      start_tag(handle, instance, buffer, message.name(), static_cast<int32_t>(length), 0, err);
  for (size_t i = 0; i < message.record_count() && *err == 0; ++i) {
    at += Record(message.record(i))
              .to_xml(handle, instance, buffer + at, message.slots(msg)[i], length - at, err);
  }
  at += end_tag(handle, instance, buffer + at, message.name(), static_cast<int32_t>(length - at),
                err);
  return at;
}

void* from_xml(const Message& message, ork_handle* handle, uint32_t instance, ork_xml* xml,
               uint32_t* err, char* err_text, uint32_t err_text_len) {
  if (*err != 0) {
    trace("debug", std::string("Already have error when rendering ") + message.name() +
                       " to XML: " + error_text(err));
    return nullptr;
  }
  ork_clear_last_error(handle);
  void* msg = create(message, handle, instance);
  if (msg == nullptr) {
    store(handle, 12, err);
    return nullptr;
  }
  for (size_t i = 0; i < message.record_count() && (*err == 0 || *err == ENOENT); ++i) {
    Record(message.record(i))
        .from_xml(handle, instance, message.slots(msg)[i], xml, err, err_text, err_text_len);
  }
  if (*err == ENOENT) {
    *err = 0;
  }
  return *err == 0 ? msg : nullptr;
}

}  // namespace by_hand
