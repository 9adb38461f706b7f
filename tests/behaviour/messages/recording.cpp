// The recording of received messages.
#include <dlfcn.h>
#include <sys/stat.h>

#include "behaviour/messages/spied.h"

namespace {

struct Write {
  std::string bytes;
  size_t size;
  size_t count;
  FILE* stream;
};
thread_local std::vector<Write>* writes = nullptr;

}  // namespace

// In front of the C library's, to see how a recording is written.
extern "C" size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream) {
  static auto* const next = reinterpret_cast<decltype(&fwrite)>(dlsym(RTLD_NEXT, "fwrite"));
  if (writes != nullptr) {
    writes->push_back(
        {std::string(static_cast<const char*>(bytes), size * count), size, count, stream});
  }
  return next(bytes, size, count, stream);
}

namespace {

using kit::Handle;
using messages::Message;
using messages::instance;
using messages::Stage;

constexpr size_t limit = 0x10000;
char recording_buffer[limit];

uint32_t fixed_time(ork_handle*, uint32_t, char* buffer, const char* tag, int32_t, uint32_t* err) {
  return *err == 0 ? static_cast<uint32_t>(std::snprintf(buffer, 64, "<%s time=\"now\">\n", tag))
                   : 0;
}

void keep(ork_handle*, uint32_t, void* ctx, void* msg, uint32_t*) {
  spy::Recorder::call("handler");
  *static_cast<void**>(ctx) = msg;
}

struct Recorded {
  std::vector<std::string> calls;
  std::vector<Write> writes;
  uint32_t err;
  uint32_t result;
  bool delivered;

  std::vector<std::string> traces() const {
    std::vector<std::string> found;
    for (const std::string& call : calls) {
      if (call.rfind("trace", 0) == 0) {
        found.push_back(call);
      }
    }
    return found;
  }
};

class Recording : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();
  const std::string name = message.name();

  std::vector<uint8_t> frame() const {
    const Handle handle;
    return messages::Made(message, handle.get(), 3).frame();
  }
  static std::string element(const Message& each) {
    const Handle handle;
    const messages::Made made(each, handle.get(), 3);
    std::string text(limit, '\0');
    uint32_t err = 0;
    text.resize(each.to_xml(handle.get(), 0, text.data(), made.get(), limit, &err));
    return text;
  }

  Recorded receive(bool library, FILE* stream) const {
    return receive_frame(frame(), library, stream);
  }
  Recorded receive_frame(const std::vector<uint8_t>& bytes, bool library, FILE* stream) const {
    Stage stage(message, ORK_TRACKING_ABSENT);
    spy::name(recording_buffer, limit, "recording");
    const auto on = spy::answer(orklib_msg_recorder_get_state, recorder_state);
    const auto to = spy::answer(orklib_msg_recorder_get_handle, stream);
    const auto memory = spy::replace(
        orklib_malloc, [](void*, uint32_t, size_t) -> void* { return recording_buffer; });
    const auto no_free = spy::replace(orklib_free, [](void*, uint32_t, void*) {});
    std::vector<uint8_t>& buffer = stage.give_buffer(bytes.size());
    std::copy(bytes.begin(), bytes.end(), buffer.begin());
    void* delivered = nullptr;
    Recorded recorded{};
    {
      const spy::Log log;
      writes = &recorded.writes;
      const auto length = static_cast<int32_t>(bytes.size());
      recorded.result = library
                            ? message.unmarshal(stage.handle(), instance, &delivered, nullptr,
                                                buffer.data(), length, keep, &stage.err)
                            : by_hand::unmarshal(message, stage.handle(), instance, &delivered,
                                                 nullptr, buffer.data(), length, keep, &stage.err);
      writes = nullptr;
      recorded.calls = log.calls();
    }
    recorded.err = stage.err;
    recorded.delivered = delivered != nullptr;
    message.destroy(stage.handle(), instance, delivered);
    return recorded;
  }
  Recorded same(FILE* stream) const {
    const Recorded hand = receive(false, stream);
    const Recorded made = receive(true, stream);
    EXPECT_CALLS(made.calls, hand.calls);
    EXPECT_EQ(made.err, 0u) << "no recording error reaches the caller";
    EXPECT_TRUE(made.delivered);
    EXPECT_EQ(made.result, hand.result);
    EXPECT_EQ(made.writes.size(), hand.writes.size());
    if (!made.writes.empty() && !hand.writes.empty()) {
      EXPECT_EQ(made.writes[0].bytes, hand.writes[0].bytes);
    }
    EXPECT_EQ(made.calls.back(), "handler") << "delivery comes last";
    return made;
  }
  std::string lost(uint32_t number, size_t length) const {
    return "trace(error,Error " + std::to_string(number) + " " + name +
           " message not recorded, xml len " + std::to_string(length) + ")";
  }
  std::string lost_again(uint32_t number) const {
    return "trace(error,Error " + std::to_string(number) + " in recording " + name + " message)";
  }

  uint32_t recorder_state = 1;
  FILE* const tape = std::tmpfile();
  ~Recording() override { std::fclose(tape); }
};

TEST_P(Recording, writes_one_item_of_the_whole_length) {
  const auto time = spy::replace(start_tag_timestamp, fixed_time);
  const Recorded made = same(tape);
  const std::string expected =
      "<fwe_ui_wayfind time=\"now\">\n" + element(message) + "</fwe_ui_wayfind>\n";
  ASSERT_EQ(made.writes.size(), 1u);
  EXPECT_EQ(made.writes[0].bytes, expected);
  EXPECT_EQ(made.writes[0].size, expected.size());
  EXPECT_EQ(made.writes[0].count, 1u);
  EXPECT_EQ(made.writes[0].stream, tape);
  EXPECT_TRUE(made.traces().empty());
  const auto at = [&](const char* call) {
    return std::find(made.calls.begin(), made.calls.end(), call);
  };
  const auto state = at("orklib_msg_recorder_get_state()");
  ASSERT_NE(state, made.calls.end());
  EXPECT_EQ(*(state + 1), "orklib_malloc(null,7,65536)");
  EXPECT_EQ(*(state + 2), "start_tag_timestamp(7,recording,'fwe_ui_wayfind',65536,?)");
  EXPECT_EQ(*(made.calls.end() - 3), "orklib_msg_recorder_get_handle()");
  EXPECT_EQ(*(made.calls.end() - 2), "orklib_free(null,7,recording)");
}

TEST_P(Recording, any_state_but_zero_records) {
  const auto time = spy::replace(start_tag_timestamp, fixed_time);
  for (const uint32_t each : {0u, 2u, 256u, 0x80000000u}) {
    recorder_state = each;
    EXPECT_EQ(same(tape).writes.size(), each != 0 ? 1u : 0u) << each;
  }
}

TEST_P(Recording, null_stream_is_traced_and_the_handler_runs) {
  const auto time = spy::replace(start_tag_timestamp, fixed_time);
  const Recorded made = same(nullptr);
  EXPECT_TRUE(made.writes.empty());
  EXPECT_CALLS(made.traces(),
               std::vector<std::string>{"trace(error,ORK record - NULL file handle for message " +
                                        name + ")"});
}

TEST_P(Recording, whether_the_stream_took_it_is_not_looked_at) {
  const auto time = spy::replace(start_tag_timestamp, fixed_time);
  FILE* const unwritable = std::fopen("/dev/null", "r");
  const Recorded made = same(unwritable);
  EXPECT_EQ(made.writes.size(), 1u);
  EXPECT_TRUE(made.traces().empty());
  std::fclose(unwritable);
}

TEST_P(Recording, failing_outer_tag_is_reported_twice) {
  const auto fails = spy::replace(
      start_tag_timestamp, [](ork_handle*, uint32_t, char*, const char*, int32_t, uint32_t* err) {
        *err = 5;
        return 3u;
      });
  const Recorded made = same(tape);
  EXPECT_TRUE(made.writes.empty());
  EXPECT_CALLS(made.traces(), std::vector<std::string>{lost(5, 3), lost_again(5)})
      << "what the failing call counted is in the length";
  EXPECT_EQ(*(made.calls.end() - 3), "orklib_free(null,7,recording)") << "between the two reports";
}

TEST_P(Recording, failing_element_is_reported_twice) {
  const auto time = spy::replace(start_tag_timestamp, fixed_time);
  const auto fails = spy::replace(
      start_tag, [](ork_handle*, uint32_t, char*, const char*, int32_t, uint8_t, uint32_t* err) {
        *err = 5;
        return 0u;
      });
  const Recorded made = same(tape);
  EXPECT_TRUE(made.writes.empty());
  const size_t length = std::string("<fwe_ui_wayfind time=\"now\">\n").size() + name.size() + 4;
  EXPECT_CALLS(made.traces(), std::vector<std::string>{lost(5, length), lost_again(5)});
}

TEST_P(Recording, failing_end_is_reported_twice) {
  const auto time = spy::replace(start_tag_timestamp, fixed_time);
  const auto fails = spy::replace(end_tag, [](ork_handle* handle, uint32_t each, char* buffer,
                                              const char* tag, int32_t room, uint32_t* err) {
    const uint32_t written = spy::next(end_tag)(handle, each, buffer, tag, room, err);
    if (tag == std::string("fwe_ui_wayfind")) {
      *err = 28;
    }
    return written;
  });
  const Recorded made = same(tape);
  EXPECT_TRUE(made.writes.empty());
  ASSERT_EQ(made.traces().size(), 2u);
  EXPECT_EQ(made.traces()[1], lost_again(28));
}

TEST_P(Recording, failed_read_is_not_recorded) {
  std::vector<uint8_t> bytes = frame();
  bytes.resize(bytes.size() - 1);
  Stage stage(message, ORK_TRACKING_ABSENT);
  const auto on = spy::answer(orklib_msg_recorder_get_state, 1);
  void* delivered = nullptr;
  {
    const spy::Log log;
    message.unmarshal(stage.handle(), instance, &delivered, nullptr, bytes.data(),
                      static_cast<int32_t>(bytes.size()), keep, &stage.err);
    EXPECT_EQ(log.count("orklib_malloc"), 0u);
  }
  EXPECT_EQ(stage.err, 90u);
  stage.lose();
}

TEST_P(Recording, without_a_buffer_the_process_aborts) {
  const std::vector<uint8_t> bytes = frame();
  const auto on = spy::answer(orklib_msg_recorder_get_state, 1);
  const auto none = spy::answer(orklib_malloc, nullptr);
  const Handle handle;
  uint32_t err = 0;
  EXPECT_DEATH(message.unmarshal(handle.get(), 0, nullptr, nullptr, bytes.data(),
                                 static_cast<int32_t>(bytes.size()), nullptr, &err),
               "ORK record - malloc failed");
}

struct XmlFree {
  void operator()(ork_xml* xml) const { ork_xml_free(xml); }
};

TEST_P(Recording, file_reads_back_as_the_message) {
  const std::string path = testing::TempDir() + "recording_" + name + ".xml";
  std::remove(path.c_str());
  uint32_t err = 0;
  ork_recorder_open(path.c_str(), &err);
  ork_recorder_switch(1);
  ASSERT_EQ(err, 0u);
  const Handle handle;
  const messages::Made sent(message, handle.get(), 3);
  const std::vector<uint8_t> bytes = frame();
  for (int i = 0; i < 2; ++i) {
    void* out = nullptr;
    message.unmarshal(handle.get(), 0, &out, nullptr, bytes.data(),
                      static_cast<int32_t>(bytes.size()), keep, &err);
    message.destroy(handle.get(), 0, out);
  }
  struct stat status {};
  stat(path.c_str(), &status);
  EXPECT_EQ(status.st_size % 4096, 0)
      << "nothing but what the stream could no longer hold: it is not flushed";
  ork_recorder_close(&err);
  EXPECT_EQ(err, 0u);
  std::string text(1 << 20, '\0');
  FILE* file = std::fopen(path.c_str(), "r");
  text.resize(std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  std::remove(path.c_str());
  int documents = 0;
  for (size_t at = 0; at < text.size(); ++documents) {
    const size_t length = ork_xml_document_length(text.data() + at, text.size() - at);
    ASSERT_GT(length, 0u);
    const std::unique_ptr<ork_xml, XmlFree> xml(
        ork_xml_parse(text.data() + at, length, &err, nullptr, 0));
    void* back = message.from_xml(handle.get(), 0, xml.get(), &err);
    ASSERT_EQ(err, 0u);
    for (size_t i = 0; i < message.record_count(); ++i) {
      EXPECT_EQ(messages::Record(message.record(i)).compare(message.slots(back)[i], sent.record(i)),
                0);
    }
    message.destroy(handle.get(), 0, back);
    at += length;
  }
  EXPECT_EQ(documents, 2);
}

INSTANTIATE_TEST_SUITE_P(All, Recording, testing::ValuesIn(messages::all()), messages::ByName());

// ---- The limit --------------------------------------------------------------

class RecordingLimit : public Recording {
 protected:
  std::vector<uint8_t> frame_of(uint32_t elements) const {
    const Handle handle;
    void* msg = message.create(handle.get(), 0);
    encoders::Filler(handle.get(), elements)
        .fill(message.record(0), message.slots(msg)[0], "limit");
    std::vector<uint8_t> bytes(message.len(handle.get(), 0, msg));
    uint32_t err = 0;
    bytes.resize(message.marshal(handle.get(), 0, bytes.data(), msg,
                                 static_cast<int32_t>(bytes.size()), &err));
    EXPECT_EQ(err, 0u);
    message.destroy(handle.get(), 0, msg);
    return bytes;
  }
};

// Grows an array until its message no longer fits: the last that fits is recorded whole, the next
// one not at all.
TEST_P(RecordingLimit, more_than_the_buffer_is_not_recorded_at_all) {
  uint32_t fits = 1;
  uint32_t too_many = 60;
  while (too_many - fits > 1) {
    const uint32_t middle = (fits + too_many) / 2;
    (receive_frame(frame_of(middle), true, tape).writes.empty() ? too_many : fits) = middle;
  }
  const Recorded last = receive_frame(frame_of(fits), true, tape);
  ASSERT_EQ(last.writes.size(), 1u);
  EXPECT_LT(last.writes[0].bytes.size(), limit);
  EXPECT_GT(last.writes[0].bytes.size(), limit / 2);
  const Recorded made = receive_frame(frame_of(too_many), true, tape);
  EXPECT_TRUE(made.writes.empty());
  EXPECT_EQ(made.err, 0u);
  EXPECT_TRUE(made.delivered);
  ASSERT_EQ(made.traces().size(), 2u);
  EXPECT_EQ(
      made.traces()[0].rfind("trace(error,Error 90 " + name + " message not recorded, xml len ", 0),
      0u)
      << made.traces()[0];
  EXPECT_EQ(made.traces()[1], lost_again(90));
}

INSTANTIATE_TEST_SUITE_P(Growing, RecordingLimit,
                         testing::Values(messages::message("fwe_dp_wayfind_debug_msg")),
                         messages::ByName());

}  // namespace
