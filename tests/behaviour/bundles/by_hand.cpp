#include "behaviour/bundles/by_hand.h"

#include "fwe_ui_wayfind/module.h"

namespace by_hand {

namespace {

void store(ork_handle* handle, uint32_t number, uint32_t* err) {
  *err = number;
  ork_store_err(handle, number);
}

void make_empty(ork_list_head& list) {
  list.next = &list;
  list.prev = &list;
}

uint32_t marshal_start(const Bundle& bundle, ork_handle* handle, uint32_t instance, uint8_t* buffer,
                       int32_t length, uint32_t* err, ork_message_header& header) {
  if (*err != 0) {
    return 0;
  }
  ork_clear_last_error(handle);
  if (handle->bundle_ctx != 0) {
    store(handle, 17, err);
    return 0;
  }
  if (length < 27) {
    store(handle, 90, err);
    return 0;
  }
  std::memset(buffer, 0, 27);
  if (length - 27 < 16) {
    store(handle, 90, err);
    return 27;
  }
  std::memcpy(buffer + 27, bundle.start().luid(), 16);
  handle->bundle_ctx = 1;
  handle->bundle_table = bundle.table();
  make_empty(handle->bundle_send_list);
  header.length = 43;
  header.sequence = handle->send_sequence;
  _ork_message_header_marshal(handle, instance, buffer, &header, 27, err);
  return 43;
}

uint32_t marshal_end(const Control& control, ork_handle* handle, uint32_t instance, uint8_t* buffer,
                     int32_t length, uint32_t* err, ork_message_header& header) {
  if (*err != 0) {
    return 0;
  }
  ork_clear_last_error(handle);
  if (handle->bundle_ctx == 0) {
    store(handle, 2, err);
    return 0;
  }
  int32_t at = 0;
  if (length < 27) {
    store(handle, 90, err);
  } else {
    std::memset(buffer, 0, 27);
    at = 27;
  }
  if (*err == 0) {
    if (length - at < 16) {
      store(handle, 90, err);
    } else {
      std::memcpy(buffer + at, control.luid(), 16);
      at += 16;
    }
  }
  if (*err == 0) {
    header.length = 43;
    header.sequence = handle->send_sequence;
    _ork_message_header_marshal(handle, instance, buffer, &header, 27, err);
  }
  bundle_send_message_list_destroy(handle, instance, err);
  return static_cast<uint32_t>(at);
}

void forget_dispatch(ork_handle* handle) {
  handle->bundle_rx_dispatch = nullptr;
  handle->bundle_rx_lut = nullptr;
  handle->bundle_commit_dispatch = nullptr;
}

void free_message(ork_handle* handle, uint32_t instance, void* msg) {
  if (msg != nullptr) {
    handle->free_fn(handle->mem_pool, instance, msg);
  }
}

std::string error_text(const uint32_t* err) { return strerror(static_cast<int>(*err)); }

void handle_start(const Bundle& bundle, ork_handle* handle, uint32_t* err) {
  const std::string name = std::string("fwe_ui_wayfind_") + bundle.name();
  if (orklib_is_accumulating_bundle(handle) != 0) {
    store(handle, 17, err);
    trace("error", "Start message " + name +
                       "_bundle_start_message received while aready in bundle context");
    return;
  }
  handle->bundle_rx_active = 1;
  make_empty(handle->bundle_receive_list);
  void* lut = nullptr;
  handle->bundle_rx_dispatch = orklib_in_dispatch_message_info(handle, &lut);
  handle->bundle_rx_lut = lut;
  handle->bundle_commit_dispatch = nullptr;
  if (handle->bundle_rx_dispatch != nullptr) {
    trace("debug", std::string("Bundle starting for ") + handle->bundle_rx_dispatch->name +
                       " with LUT " + spy::symbol(lut));
  } else {
    trace("debug", "Bundle " + name + " start message handler with LUT " + spy::symbol(lut));
  }
}

void handle_abort(ork_handle* handle, uint32_t instance, void* msg, uint32_t* err) {
  if (*err != 0) {
    trace("error", "Error set in aborting bundle: " + error_text(err));
  } else if (orklib_is_accumulating_bundle(handle) == 0) {
    trace("error", "Abort message received outside of bundle context");
    store(handle, 74, err);
  }
  bundle_receive_message_list_destroy(handle, instance, err);
  void* lut = nullptr;
  if (const ork_bundle_dispatch_info* info = orklib_in_dispatch_message_info(handle, &lut)) {
    trace("debug",
          std::string("Bundle aborting for ") + info->name + " with LUT " + spy::symbol(lut));
  }
  forget_dispatch(handle);
  free_message(handle, instance, msg);
}

// Without the linked-in handler, which this program lacks.
void run_handler(const Bundle& bundle, const ork_bundle_dispatch_info& info, ork_handle* handle,
                 uint32_t instance, void* ctx, uint32_t* err) {
  const auto invoke = [&](const char* words, ork_bundle_handler handler) {
    trace("debug", std::string("Invoking ") + words + " for " + info.name);
    handler(handle, instance, ctx, err);
  };
  if (info.bundle_handler != nullptr) {
    invoke("LUT-registered handler", info.bundle_handler);
  } else if (handle->bundle_handler != nullptr) {
    invoke("ORK handle-registered handler", handle->bundle_handler);
  } else if (fwe_ui_wayfind_bundle_registered_handler != nullptr) {
    invoke("LUT-registered handler", fwe_ui_wayfind_bundle_registered_handler);
  } else if (*bundle.schema().registered != nullptr) {
    invoke("registered bundle handler", *bundle.schema().registered);
  } else {
    trace("error", std::string("Call to unimplemented handler for ") + info.name);
  }
}

void handle_commit(const Bundle& bundle, ork_handle* handle, uint32_t instance, void* ctx,
                   void* msg, uint32_t* err) {
  if (*err != 0) {
    trace("error", "Error set in committing bundle: " + error_text(err));
  } else if (orklib_is_accumulating_bundle(handle) == 0) {
    trace("error", "Abort message received outside of bundle context");
    store(handle, 74, err);
  } else if (const ork_bundle_dispatch_info* info =
                 orklib_in_dispatch_message_info(handle, nullptr)) {
    handle->bundle_commit_dispatch = info;
    run_handler(bundle, *info, handle, instance, ctx, err);
  }
  bundle_receive_message_list_destroy(handle, instance, err);
  free_message(handle, instance, msg);
  forget_dispatch(handle);
}

}  // namespace

uint32_t marshal(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance,
                 uint8_t* buffer, int32_t length, uint32_t* err) {
  ork_message_header header{0xBC, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 0, 0, 0};
  return kind == Kind::start
             ? marshal_start(bundle, handle, instance, buffer, length, err, header)
             : marshal_end(bundle.control(kind), handle, instance, buffer, length, err, header);
}

void handle_message(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance,
                    void* ctx, void* msg, uint32_t* err) {
  switch (kind) {
    case Kind::start:
      handle_start(bundle, handle, err);
      free_message(handle, instance, msg);
      break;
    case Kind::abort: handle_abort(handle, instance, msg, err); break;
    case Kind::commit: handle_commit(bundle, handle, instance, ctx, msg, err); break;
  }
}

uint32_t unmarshal(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance,
                   void* ctx, void** out, ork_message_handler handler, uint32_t* err) {
  if (*err == 0) {
    if (out != nullptr) {
      *out = nullptr;
    }
    if (handler != nullptr) {
      handler(handle, instance, ctx, nullptr, err);
    } else {
      handle_message(bundle, kind, handle, instance, ctx, nullptr, err);
    }
  }
  return 43;
}

uint32_t print(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance, char* buffer,
               uint32_t length, uint32_t* err) {
  if (*err != 0) {
    return 0;
  }
  const uint32_t at =
      ork_print_space(handle, instance, buffer, 0, static_cast<int32_t>(length), err);
  return at + ork_snprintf(handle, instance, buffer + at, static_cast<int32_t>(length - at), err,
                           "bundle %s@%s: <<<<<<<<\n", messages::kind_names[kind], bundle.name());
}

uint32_t to_xml(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance,
                char* buffer, uint32_t length, uint32_t* err) {
  if (*err != 0) {
    return 0;
  }
  const std::string word = std::string("bundle_") + messages::kind_names[kind];
  const std::string tag = word + " name=\"" + bundle.name() + "\"";
  const uint32_t at =
      start_tag(handle, instance, buffer, tag.c_str(), static_cast<int32_t>(length), 0, err);
  return at + end_tag(handle, instance, buffer + at, word.c_str(),
                      static_cast<int32_t>(length - at), err);
}

}  // namespace by_hand
