// When out_msg is written, and how the cursor goes on from what the header's reader gave, over all
// messages.
#include "behaviour/messages/spied.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::instance;
using messages::Stage;

class UnmarshalSteps : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();
  const std::vector<uint8_t> frame = messages::Made(message, Handle().get(), 3).frame();

  uint32_t only(Stage& stage, void** out) const {
    return message.unmarshal_only(stage.handle(), instance, out, frame.data(),
                                  static_cast<int32_t>(frame.size()), &stage.err);
  }
};

// Runs look in front of each of the platform's functions that reading a message leads to: the
// header's, and two of every record's.
class Watch {
 public:
  explicit Watch(std::function<void()> look)
      : header_(spy::replace(_ork_message_header_unmarshal,
                             [look](auto... args) {
                               return look(), spy::next(_ork_message_header_unmarshal)(args...);
                             })),
        made_(spy::replace(orklib_type_stats_create_object,
                           [look](auto... args) {
                             return look(), spy::next(orklib_type_stats_create_object)(args...);
                           })),
        read_(spy::replace(_ork_variant_jump_unmarshal, [look](auto... args) {
          return look(), spy::next(_ork_variant_jump_unmarshal)(args...);
        })) {}

 private:
  spy::Replacement header_, made_, read_;
};

TEST_P(UnmarshalSteps, only_sets_out_msg_after_everything_else) {
  Stage stage(message, ORK_TRACKING_OFF);
  void* out = &stage;
  size_t looks = 0;
  {
    const Watch watch([&] {
      looks += 1;
      EXPECT_EQ(out, &stage);
    });
    EXPECT_EQ(only(stage, &out), frame.size());
  }
  EXPECT_GE(looks, 1 + 2 * message.record_count());
  message.destroy(stage.handle(), instance, out);
}

TEST_P(UnmarshalSteps, out_msg_is_cleared_behind_the_last_error_and_before_the_read) {
  for (const bool fails : {false, true}) {
    Stage stage(message, ORK_TRACKING_OFF);
    void* out = &stage;
    std::vector<const void*> at_clear;
    size_t looks = 0;
    const auto clear =
        spy::replace(ork_clear_last_error, [&](ork_handle*) { at_clear.push_back(out); });
    const auto length = static_cast<int32_t>(frame.size()) - (fails ? 1 : 0);
    const ork_message_handler keep = [](ork_handle*, uint32_t, void*, void*, uint32_t*) {};
    {
      const Watch watch([&] {
        looks += 1;
        EXPECT_EQ(out, nullptr);
      });
      message.unmarshal(stage.handle(), instance, nullptr, &out, frame.data(), length, keep,
                        &stage.err);
    }
    EXPECT_GE(looks, 1 + 2 * message.record_count());
    ASSERT_GE(at_clear.size(), 2u);
    EXPECT_EQ(at_clear[0], &stage);
    EXPECT_EQ(at_clear[1], nullptr) << "where the read begins";
    EXPECT_EQ(out == nullptr, stage.err != 0);
    message.destroy(stage.handle(), instance, out);
    if (fails) {
      stage.lose();
    }
  }
}

// What the header's reader gives counts, whatever it is: the first record lies the identifier's 16
// bytes behind that.
TEST_P(UnmarshalSteps, record_lies_sixteen_bytes_behind_what_the_header_took) {
  for (const uint32_t taken : {0u, 5u, 27u, 30u}) {
    for (const uint32_t error : {0u, 5u}) {
      Stage stage(message, ORK_TRACKING_OFF);
      std::vector<uint8_t> shifted(taken + 16 + frame.size() - 43);
      std::copy(frame.begin() + 43, frame.end(), shifted.begin() + taken + 16);
      const auto odd = spy::replace(
          _ork_message_header_unmarshal,
          [=](ork_handle*, uint32_t, const uint8_t*, ork_message_header*, int32_t, uint32_t* err) {
            *err = error;
            return taken;
          });
      void* out = nullptr;
      {
        const spy::Log log;
        const auto length = static_cast<int32_t>(shifted.size());
        EXPECT_EQ(message.unmarshal_only(stage.handle(), instance, &out, shifted.data(), length,
                                         &stage.err),
                  error == 0 ? shifted.size() : taken + 16);
        EXPECT_EQ(log.count("_ork_instance_variant_unmarshal") != 0, error == 0)
            << "read only without an error";
      }
      EXPECT_EQ(stage.err, error);
      ASSERT_NE(out, nullptr);
      const messages::Made sent(message, stage.handle(), 3, instance);
      for (size_t i = 0; i < message.record_count(); ++i) {
        ASSERT_NE(message.slots(out)[i], nullptr) << "made in any case";
        if (error == 0) {
          EXPECT_EQ(
              messages::Record(message.record(i)).compare(message.slots(out)[i], sent.record(i)),
              0);
        }
      }
      message.destroy(stage.handle(), instance, out);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, UnmarshalSteps, testing::ValuesIn(messages::all()),
                         messages::ByName());

}  // namespace
