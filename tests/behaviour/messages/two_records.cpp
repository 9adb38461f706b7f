// What is peculiar to the one message that carries two records.
#include "behaviour/messages/spied.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::Record;
using messages::instance;
using messages::Stage;

const char* const second_name = "fwe_cl_wayfind_auto_tunnel_misc";

class TwoRecords : public testing::Test {
 protected:
  const Message message = messages::message("fwe_cl_wayfind_auto_tunnel_show");

  std::vector<uint8_t> frame() const {
    const Handle handle;
    return messages::Made(message, handle.get(), 3).frame();
  }
  size_t first_size() const {
    const Handle handle;
    const messages::Made made(message, handle.get(), 3);
    std::vector<uint8_t> image(4096);
    uint32_t err = 0;
    return Record(message.record(0))
        .marshal(handle.get(), 0, image.data(), made.record(0), 4096, &err);
  }

  // How an unmarshal of length bytes of a frame ends, with the given allocation failing.
  struct End {
    uint32_t result;
    uint32_t err;
    bool given;
    bool made[2] = {};
    bool read[2] = {};  // holds what the sender had put in
    std::vector<std::string> calls;

    long stored_12() const { return std::count(calls.begin(), calls.end(), "ork_store_err(12)"); }
  };
  End unmarshal(size_t length, unsigned fail_alloc = 0) const {
    const std::vector<uint8_t> bytes = frame();
    Stage stage(message, ORK_TRACKING_ABSENT);
    const messages::Made sent(message, stage.handle(), 3, instance);
    End end{};
    void* msg = nullptr;
    {
      const spy::Log log;
      spy::fail_alloc(fail_alloc);
      end.result = message.unmarshal_only(stage.handle(), instance, &msg, bytes.data(),
                                          static_cast<int32_t>(length), &stage.err);
      spy::fail_alloc(0);
      end.calls = log.calls();
    }
    end.err = stage.err;
    end.given = msg != nullptr;
    for (size_t i = 0; msg != nullptr && i < 2; ++i) {
      void* record = message.slots(msg)[i];
      end.made[i] = record != nullptr;
      end.read[i] =
          record != nullptr && Record(message.record(i)).compare(record, sent.record(i)) == 0;
    }
    message.destroy(stage.handle(), instance, msg);
    return end;
  }
  // Which allocation of an unmarshal of length bytes makes the second record: the last one of its
  // size.
  unsigned allocation_of_second(size_t length) const {
    unsigned nth = 0;
    unsigned second = 0;
    for (const std::string& call : unmarshal(length).calls) {
      nth += call.rfind("alloc_fn", 0) == 0 ? 1 : 0;
      second = call.rfind("alloc_fn(7,56)", 0) == 0 ? nth : second;
    }
    return second;
  }
};

TEST_F(TwoRecords, length_counts_the_frame_once) {
  const Handle handle;
  const messages::Made made(message, handle.get());
  EXPECT_EQ(message.len(handle.get(), 0, made.get()),
            43 + Record(message.record(0)).len(handle.get(), 0, made.record(0)) +
                Record(message.record(1)).len(handle.get(), 0, made.record(1)));
}

TEST_F(TwoRecords, stand_behind_one_another_on_the_wire) {
  const Handle handle;
  const messages::Made made(message, handle.get(), 3);
  const std::vector<uint8_t> bytes = made.frame();
  size_t at = 43;
  for (size_t i = 0; i < 2; ++i) {
    std::vector<uint8_t> image(4096);
    uint32_t err = 0;
    image.resize(Record(message.record(i))
                     .marshal(handle.get(), 0, image.data(), made.record(i), 4096, &err));
    ASSERT_LE(at + image.size(), bytes.size());
    EXPECT_TRUE(std::equal(image.begin(), image.end(), bytes.begin() + static_cast<long>(at)));
    at += image.size();
  }
  EXPECT_EQ(at, bytes.size());
}

TEST_F(TwoRecords, second_is_only_created_after_the_first) {
  Stage stage(message, ORK_TRACKING_OFF);
  const spy::Log log;
  spy::fail_alloc(2);
  EXPECT_EQ(message.create(stage.handle(), instance), nullptr);
  EXPECT_EQ(log.count("tawny_set_callsite_tag"), 1u);
  EXPECT_EQ(log.count("alloc_fn"), 2u);
  spy::fail_alloc(0);
}

TEST_F(TwoRecords, second_that_fails_takes_the_first_with_it) {
  Stage stage(message, ORK_TRACKING_OFF);
  const spy::Log log;
  spy::fail_alloc(3);
  EXPECT_EQ(message.create(stage.handle(), instance), nullptr);
  EXPECT_CALLS(log.calls_of({"alloc_fn", "free_fn", "tawny_set_callsite_tag"}),
               {"alloc_fn(7,48)=new1", "tawny_set_callsite_tag(2693858316)", "alloc_fn(7,104)=new2",
                "tawny_set_callsite_tag(2693858317)", "alloc_fn(7,56)=null", "free_fn(7,new2)",
                "free_fn(7,new1)"});
  spy::fail_alloc(0);
}

TEST_F(TwoRecords, second_is_marshalled_without_a_look_at_the_firsts_error) {
  Stage stage(message, ORK_TRACKING_OFF);
  const messages::Made made(message, stage.handle(), 3, instance);
  std::vector<uint8_t>& buffer = stage.give_buffer(43 + first_size() - 1);
  uint8_t* const end = buffer.data() + 43 + first_size() - 1;
  const uint32_t result = message.marshal(stage.handle(), instance, buffer.data(), made.get(),
                                          static_cast<int32_t>(43 + first_size() - 1), &stage.err);
  EXPECT_EQ(stage.err, 90u);
  EXPECT_LE(result, 43 + first_size() - 1) << "the second gave 0 at once";
  EXPECT_EQ(std::count(end, buffer.data() + buffer.size(), 0xA5), 64);
}

TEST_F(TwoRecords, room_for_the_first_alone_keeps_the_header_unwritten) {
  Stage stage(message, ORK_TRACKING_OFF);
  const messages::Made made(message, stage.handle(), 3, instance);
  const size_t length = 43 + first_size();
  std::vector<uint8_t>& buffer = stage.give_buffer(length);
  const uint32_t result = message.marshal(stage.handle(), instance, buffer.data(), made.get(),
                                          static_cast<int32_t>(length), &stage.err);
  EXPECT_EQ(stage.err, 90u);
  EXPECT_EQ(result, length);
  EXPECT_EQ(std::count(buffer.begin(), buffer.begin() + 27, 0), 27);
  EXPECT_TRUE(std::equal(buffer.begin() + 27, buffer.begin() + static_cast<long>(length),
                         frame().begin() + 27));
}

TEST_F(TwoRecords, both_read_in_order) {
  const End end = unmarshal(frame().size());
  EXPECT_EQ(end.err, 0u);
  EXPECT_EQ(end.result, frame().size());
  EXPECT_TRUE(end.read[0] && end.read[1]);
}

TEST_F(TwoRecords, failure_in_the_first_still_creates_the_second_unread) {
  for (size_t length = 43; length < 43 + first_size(); ++length) {
    const End end = unmarshal(length);
    EXPECT_EQ(end.err, 90u) << length;
    EXPECT_TRUE(end.given && end.made[0] && end.made[1]) << length;
    EXPECT_FALSE(end.read[1]) << length;
  }
}

TEST_F(TwoRecords, failure_in_the_second_keeps_the_first) {
  const size_t second = 43 + first_size();
  for (size_t length = second; length < frame().size(); ++length) {
    const End end = unmarshal(length);
    EXPECT_EQ(end.err, 90u) << length;
    EXPECT_TRUE(end.made[0] && end.made[1]) << length;
    EXPECT_TRUE(end.read[0]) << length;
    EXPECT_TRUE(length >= second + 7 || !end.read[1])
        << length;  // behind that there may be zeros alone
    EXPECT_GE(end.result, second);
  }
}

TEST_F(TwoRecords, unreadable_header_creates_both_and_reads_neither) {
  for (size_t length = 0; length < 27; ++length) {
    const End end = unmarshal(length);
    EXPECT_EQ(end.err, 90u);
    EXPECT_EQ(end.result, 16u);
    EXPECT_TRUE(end.made[0] && end.made[1]);
    EXPECT_FALSE(end.read[0] || end.read[1]);
  }
}

TEST_F(TwoRecords, first_without_memory_still_tries_the_second) {
  const End end = unmarshal(frame().size(), 2);
  EXPECT_EQ(end.err, 12u);
  EXPECT_TRUE(end.given);
  EXPECT_FALSE(end.made[0]);
  EXPECT_TRUE(end.made[1]);
  EXPECT_FALSE(end.read[1]);
  EXPECT_EQ(end.result, 43u);
}

TEST_F(TwoRecords, second_without_memory_keeps_the_first_read) {
  const End end = unmarshal(frame().size(), allocation_of_second(frame().size()));
  EXPECT_EQ(end.err, 12u);
  EXPECT_TRUE(end.given && end.made[0] && end.read[0]);
  EXPECT_FALSE(end.made[1]);
  EXPECT_EQ(end.result, 43 + first_size());
}

TEST_F(TwoRecords, record_without_memory_replaces_the_error_of_the_header) {
  for (const size_t refused : {0u, 1u}) {
    const End end = unmarshal(20, refused == 0 ? 2 : allocation_of_second(20));
    EXPECT_EQ(end.err, 12u) << "no longer the header's 90";
    EXPECT_EQ(end.stored_12(), 1);
    EXPECT_EQ(end.result, 16u);
    EXPECT_TRUE(end.given);
    EXPECT_EQ(end.made[0], refused != 0);
    EXPECT_EQ(end.made[1], refused != 1);
    EXPECT_FALSE(end.read[0] || end.read[1]);
  }
}

TEST_F(TwoRecords, second_without_memory_replaces_the_error_of_the_first) {
  const Handle handle(ORK_TRACKING_ABSENT);
  const std::vector<uint8_t> bytes = frame();
  for (size_t length = 43; length < 43 + first_size(); ++length) {
    void* alone = Record(message.record(0)).create_internal(handle.get(), 0);
    uint32_t err = 0;
    const uint32_t read = Record(message.record(0))
                              .unmarshal(handle.get(), 0, bytes.data() + 43, alone,
                                         static_cast<int32_t>(length - 43), &err);
    Record(message.record(0)).destroy(handle.get(), 0, alone);
    EXPECT_EQ(err, 90u) << length;
    const End end = unmarshal(length, allocation_of_second(length));
    EXPECT_EQ(end.err, 12u) << length;
    EXPECT_EQ(end.stored_12(), 1) << length;
    EXPECT_EQ(end.result, 43 + read) << length;
    EXPECT_TRUE(end.given && end.made[0]) << length;
    EXPECT_FALSE(end.made[1]) << length;
  }
}

TEST_F(TwoRecords, neither_record_starts) {
  const std::vector<uint8_t> bytes = frame();
  Stage stage(message, ORK_TRACKING_ABSENT);
  void* msg = nullptr;
  {
    const auto fails =
        spy::replace(orklib_type_stats_create_object,
                     [](ork_handle*, uint32_t, const ork_type_info*, void*, uint32_t* err) {
                       *err = 5;
                       return 5u;
                     });
    const spy::Log log;
    EXPECT_EQ(message.unmarshal_only(stage.handle(), instance, &msg, bytes.data(),
                                     static_cast<int32_t>(bytes.size()), &stage.err),
              43u);
    EXPECT_EQ(log.calls_of({"ork_store_err"}),
              (std::vector<std::string>{"ork_store_err(12)", "ork_store_err(12)"}));
  }
  EXPECT_EQ(stage.err, 12u) << "whatever kept a record from starting";
  EXPECT_EQ(message.slots(msg), (std::vector<void*>{nullptr, nullptr}));
  message.destroy(stage.handle(), instance, msg);
}

// ---- Text -------------------------------------------------------------------

TEST_F(TwoRecords, print_skips_the_second_after_the_first_failed) {
  const Handle handle;
  const messages::Made made(message, handle.get(), 3);
  char buffer[4096] = "";
  uint32_t err = 0;
  const uint32_t whole = message.print(handle.get(), 0, buffer, made.get(), sizeof buffer, &err);
  const std::string text(buffer, whole);
  const size_t second = text.find(std::string("  ") + second_name);
  ASSERT_NE(second, std::string::npos);
  buffer[0] = 0;
  // Cut inside the first record: the second's label never appears, and the error is 90.
  message.print(handle.get(), 0, buffer, made.get(), static_cast<uint32_t>(second - 3), &err);
  EXPECT_EQ(err, 90u);
  EXPECT_EQ(ork_handle_last_error(handle.get()), 90u);
  EXPECT_EQ(std::string(buffer).find(second_name), std::string::npos);
}

TEST_F(TwoRecords, any_error_between_the_records_becomes_ninety) {
  Stage stage(message, ORK_TRACKING_OFF);
  const messages::Made made(message, stage.handle(), 3, instance);
  char buffer[4096] = "";
  // The second call for blanks is the first record's own.
  const auto odd = spy::fail(ork_print_space, 5, 2);
  const spy::Log log;
  message.print(stage.handle(), instance, buffer, made.get(), sizeof buffer, &stage.err);
  EXPECT_EQ(stage.err, 90u);
  EXPECT_EQ(log.count("ork_store_err"), 1u);
  EXPECT_EQ(std::string(buffer).find(second_name), std::string::npos);
  EXPECT_EQ(std::string(buffer).substr(std::string(buffer).size() - 2), "}\n");
}

struct XmlFree {
  void operator()(ork_xml* xml) const { ork_xml_free(xml); }
};

class TwoRecordsXml : public TwoRecords {
 protected:
  const Handle handle;
  const messages::Made sent{message, handle.get(), 3};

  std::string element(size_t i) {
    char buffer[4096] = "";
    uint32_t err = 0;
    const uint32_t length =
        Record(message.record(i))
            .to_xml(handle.get(), 0, buffer, sent.record(i), sizeof buffer, &err);
    EXPECT_EQ(err, 0u);
    return {buffer, length};
  }
  // Which records came back with the sender's values.
  std::pair<bool, bool> read(const std::string& inside) {
    const std::string text = "<doc>" + inside + "</doc>";
    uint32_t err = 0;
    const std::unique_ptr<ork_xml, XmlFree> xml(
        ork_xml_parse(text.data(), text.size(), &err, nullptr, 0));
    void* msg = message.from_xml(handle.get(), 0, xml.get(), &err);
    EXPECT_EQ(err, 0u);
    EXPECT_NE(msg, nullptr);
    const auto same = [&](size_t i) {
      return Record(message.record(i)).compare(message.slots(msg)[i], sent.record(i)) == 0;
    };
    const std::pair<bool, bool> found{same(0), same(1)};
    message.destroy(handle.get(), 0, msg);
    return found;
  }
};

TEST_F(TwoRecordsXml, both_elements) {
  EXPECT_EQ(read(element(0) + element(1)), std::pair(true, true));
}

TEST_F(TwoRecordsXml, first_element_alone) { EXPECT_EQ(read(element(0)), std::pair(true, false)); }

TEST_F(TwoRecordsXml, second_element_alone_is_not_read) {
  EXPECT_EQ(read(element(1)), std::pair(false, false)) << "both keep their defaults";
}

TEST_F(TwoRecordsXml, no_element) { EXPECT_EQ(read(""), std::pair(false, false)); }

// The message is lost, not destroyed.
TEST_F(TwoRecordsXml, error_of_the_second_alone_loses_the_message) {
  const auto unreadable =
      spy::replace(null_string_from_xml,
                   [](ork_handle* own, uint32_t each, const char* path, ork_xml* xml, char* chars,
                      uint32_t size, uint32_t* err, char* err_text, uint32_t err_text_len) {
                     if (std::string(path).find(second_name) != std::string::npos) {
                       *err = 22;
                     } else {
                       spy::next(null_string_from_xml)(own, each, path, xml, chars, size, err,
                                                       err_text, err_text_len);
                     }
                   });
  const std::string text = "<doc>" + element(0) + element(1) + "</doc>";
  Stage stage(message, ORK_TRACKING_OFF);
  const std::unique_ptr<ork_xml, XmlFree> xml(
      ork_xml_parse(text.data(), text.size(), &stage.err, nullptr, 0));
  const spy::Log log;
  EXPECT_EQ(message.from_xml(stage.handle(), instance, xml.get(), &stage.err), nullptr);
  const messages::Outcome made = stage.outcome(log, 0, nullptr);
  EXPECT_EQ(made.err, 22u);
  EXPECT_EQ(made.created, 1u);
  EXPECT_EQ(made.destroyed, 0u);
  EXPECT_GE(made.live_blocks, 3u);
  EXPECT_EQ(log.count("free_fn"), 0u);
  stage.lose();
}

}  // namespace
