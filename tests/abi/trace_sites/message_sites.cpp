// The sites of messages.
#include <cerrno>
#include <span>

#include "behaviour/messages/family.h"
#include "ork/tawny.h"
#include "stage.h"
#include "texts.h"

namespace trace_sites {
namespace {

struct Message : messages::Message {
  using messages::Message::Message;
  std::string full(const char* suffix) const { return std::string(name()) + "_message" + suffix; }

  // A frame as a peer would send it.
  std::vector<uint8_t> frame(const TickingHandle& handle) const {
    void* msg = create(handle, instance);
    std::vector<uint8_t> bytes(len(handle, instance, msg));
    bytes.resize(marshal(handle, instance, bytes.data(), msg, static_cast<int32_t>(bytes.size()),
                         &handle.err));
    return bytes;
  }
};

std::vector<Message> messages() {
  std::vector<Message> all;
  for (const wayfind_message& message : std::span(wayfind_messages, wayfind_message_count))
    all.emplace_back(message);
  return all;
}

// The shared copy of the message's descriptor is the given one; other types have themselves for a
// copy.
spy::Replacement shared_copy(const TickingHandle& handle, const Message& message,
                             const ork_type_info* copy) {
  handle->shared_types = 2;  // shared, but not the storage that the database hooks watch
  const ork_type_info* own = message.schema().type;
  return spy::replace(ork_type_info_ptr_get, [=](auto, auto, const ork_type_info* type, auto) {
    return type == own ? copy : type;
  });
}

TEST(MessageSites, create) {
  for (const Message& message : messages()) {
    const ork_type_info& type = *message.schema().type;
    const auto create = [&](bool shallow, const ork_type_info* copy) {
      const TickingHandle handle;
      const auto shared = shared_copy(handle, message, copy);
      shallow ? message.create_shallow(handle, instance) : message.create(handle, instance);
    };
    for (const bool shallow : {true, false}) {
      const std::string name = message.full(shallow ? "_create_shallow" : "_create");
      expect_trace({name, text::no_variants, "fatal", {}},
                   [&] { create(shallow, without_variants(type)); });
      expect_trace({name, text::variant_beyond, "info", {"0", minus_one}},
                   [&] { create(shallow, with_fewer_variants(type)); });
    }
    expect_trace({message.full("_create_shallow"), text::corrupted, "fatal", {}}, [&] {
      const TickingHandle handle;
      handle.corrupt();
      message.create_shallow(handle, instance);
    });
    // The records come before the message's own header, and would meet the corrupted handle first.
    const TickingHandle* handle = nullptr;
    expect_trace_after_change(
        {message.full("_create"), text::corrupted, "fatal", {}},
        [&] {
          handle = new TickingHandle;
          const auto records = spy::replace(tawny_set_callsite_tag, [&](auto tag) {
            spy::next(tawny_set_callsite_tag)(tag);
            if (tag == message.schema().call_site_tag + message.record_count() - 1)
              count_calls_from_now();
          });
          message.create(*handle, instance);
        },
        [&] { handle->corrupt(); });
  }
}

TEST(MessageSites, destroy) {
  for (const Message& message : messages()) {
    const auto destroy = [&](const ork_type_info* type) {
      const TickingHandle handle;
      void* msg = message.create(handle, instance);
      kit::store(msg, type);
      message.destroy(handle, instance, msg);
    };
    expect_trace({message.full("_destroy"), text::no_variants, "fatal", {}},
                 [&] { destroy(without_variants(*message.schema().type)); });
    expect_trace({message.full("_destroy"), text::variant_beyond, "info", {"0", minus_one}},
                 [&] { destroy(with_fewer_variants(*message.schema().type)); });
    expect_trace({message.full("_destroy"), text::type_corrupted, "fatal", {}},
                 [&] { destroy(nullptr); });
  }
}

TEST(MessageSites, accessors) {
  for (const Message& message : messages()) {
    for (size_t i = 0; i < message.record_count(); ++i) {
      const std::string record = message.record(i).name;
      const std::string name = message.full("_") + record;
      uint32_t err = EIO;
      const auto expect = [&](const std::string& text,
                              const std::function<void(ork_handle*)>& access) {
        expect_trace({name, text, "debug", {words_of(EIO)}}, [&] {
          const TickingHandle handle;
          access(handle);
        });
      };
      expect("Error present when getting value for " + record + ": %s",
             [&](ork_handle* handle) { message.get(handle, instance, nullptr, &err, i); });
      expect("Error present getting detached " + record + " value for " + message.name() + ": %s",
             [&](ork_handle* handle) { message.get_detach(handle, instance, nullptr, &err, i); });
      expect("Error present when setting value for " + record + ": %s",
             [&](ork_handle* handle) { message.set(handle, instance, nullptr, nullptr, &err, i); });
      expect("Error present when freeing and setting value for " + record + ": %s",
             [&](ork_handle* handle) {
               message.free_and_set(handle, instance, nullptr, nullptr, &err, i);
             });
    }
  }
}

TEST(MessageSites, marshal) {
  for (const Message& message : messages()) {
    const std::string name = message.full("_marshal");
    const auto marshal = [&](uint32_t error, bool in_bundle, int32_t length) {
      const TickingHandle handle;
      void* msg = message.create(handle, instance);
      handle->bundle_ctx = in_bundle ? 1 : 0;
      handle.err = error;
      uint8_t buffer[4096];
      message.marshal(handle, instance, buffer, msg, length, &handle.err);
    };
    constexpr int32_t enough = 4096;
    expect_trace({name, text::marshal_error, "debug", {words_of(EIO)}},
                 [&] { marshal(EIO, false, enough); });
    expect_trace({name,
                  text::domain_refuses,
                  "error",
                  {message.name(), message.schema().luid_text, "the peer"}},
                 [&] {
                   const TickingHandle handle;
                   void* msg = message.create(handle, instance);
                   handle->domain_name = "the peer";
                   const auto domain = spy::answer(ork_domain_lookup_message_ok, 0);
                   uint8_t buffer[4096];
                   message.marshal(handle, instance, buffer, msg, enough, &handle.err);
                 });
    expect_trace({name, text::bundle_refuses, "error", {message.name(), words_of(ENOENT)}}, [&] {
      const auto bundle = spy::fail(bundle_message_validate_add, ENOENT);
      marshal(0, true, enough);
    });
    for (const bool quiet : {true, false}) {
      expect_trace({name,
                    text::marshal_failed,
                    quiet ? "debug" : "error",
                    {message.name(), words_of(EMSGSIZE)},
                    quiet ? 0u : 1u},
                   [&] {
                     const auto suppressed =
                         spy::answer(orklib_suppress_messages_enabled, quiet ? 1 : 0);
                     marshal(0, false, 3);
                   });
    }
    expect_trace({name, text::bundle_uncounted, "error", {message.name(), words_of(ENOENT)}}, [&] {
      const auto taken = spy::replace(bundle_message_validate_add, [](auto...) {});
      const auto counted = spy::fail(bundle_message_increment_count, ENOENT);
      marshal(0, true, enough);
    });
  }
}

TEST(MessageSites, unmarshal) {
  for (const Message& message : messages()) {
    const auto unmarshal = [&](uint32_t error, bool only) {
      const TickingHandle handle;
      const std::vector<uint8_t> frame = message.frame(handle);
      void* out = nullptr;
      handle.err = error;
      const auto length = static_cast<int32_t>(frame.size());
      if (only) {
        message.unmarshal_only(handle, instance, &out, frame.data(), length, &handle.err);
      } else {
        message.unmarshal(handle, instance, nullptr, &out, frame.data(), length, nullptr,
                          &handle.err);
      }
    };
    const std::vector<std::string> arguments = {message.name(), words_of(EIO)};
    expect_trace({message.full("_unmarshal"), text::unmarshal_error, "debug", arguments},
                 [&] { unmarshal(EIO, false); });
    expect_trace({message.full("_unmarshal_only"), text::unmarshal_only_error, "debug", arguments},
                 [&] { unmarshal(EIO, true); });
    const Expected unhandled{
        message.full("_default"), text::default_handler(message.name()), "info", {}};
    expect_trace(unhandled, [&] { unmarshal(0, false); });

    const auto record = [&] {
      const auto recording = spy::answer(orklib_msg_recorder_get_state, 1);
      unmarshal(0, false);
    };
    expect_trace({message.full("_record"), text::recorder_memory, "fatal", {}}, [&] {
      const auto memory = spy::answer(orklib_malloc, nullptr);
      record();
    });
    expect_traces(
        {{message.full("_record"), text::recorder_stream(message.name()), "error", {}}, unhandled},
        [&] {
          const auto stream = spy::answer(orklib_msg_recorder_get_handle, nullptr);
          record();
        });
    expect_traces(
        {{message.full("_record"), text::not_recorded(message.name()), "error", {"90", "0"}},
         {message.full("_unmarshal"), text::recording_error(message.name()), "error", {"90"}},
         unhandled},
        [&] {
          const auto tag = spy::fail(start_tag_timestamp, EMSGSIZE);
          record();
        });
  }
}

TEST(MessageSites, other_forms) {
  for (const Message& message : messages()) {
    const std::string name = message.name();
    uint32_t err = EIO;
    const auto expect = [&](const char* suffix, const std::string& text,
                            const std::function<void(ork_handle*)>& render) {
      expect_trace({message.full(suffix), text, "debug", {words_of(EIO)}}, [&] {
        const TickingHandle handle;
        render(handle);
      });
    };
    expect("_print", "Already have error when printing " + name + ": %s",
           [&](ork_handle* handle) { message.print(handle, instance, nullptr, nullptr, 0, &err); });
    expect(
        "_to_xml", "Already have error when rendering XML for " + name + ": %s",
        [&](ork_handle* handle) { message.to_xml(handle, instance, nullptr, nullptr, 0, &err); });
    expect("_from_xml", "Already have error when rendering " + name + " to XML: %s",
           [&](ork_handle* handle) { message.from_xml(handle, instance, nullptr, &err); });
  }
}

}  // namespace
}  // namespace trace_sites
