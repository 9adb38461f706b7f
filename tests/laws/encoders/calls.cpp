// What holds for the calls that the forms of every record make.
#include "behaviour/encoders/values.h"
#include "support/spied.h"

namespace {

using namespace encoders;

class FormCalls : public testing::TestWithParam<unsigned> {
 protected:
  const Calls& calls() const { return all_records()[GetParam()]; }
};

// All but these take an instance as their first argument.
bool takes_instance(const std::string& call) {
  return !call.starts_with("ork_clear_last_error(") &&
         !call.starts_with("ork_get_instance_variant(");
}

TEST_P(FormCalls, in_cr_style_are_made_for_the_handles_instance_under_the_types_name) {
  const std::string name = calls().name();
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const SpiedHandle h({.tracking = tracking, .cr_instance = 9});
    const Object object = filled(h, calls(), 2);
    std::string text(ample, '\0');
    spy::name(text.data(), text.size(), "text");
    const auto expect_instance = [&](const std::vector<std::string>& log) {
      for (const std::string& call : log) {
        EXPECT_TRUE(!takes_instance(call) || call.find("(9,") == call.find('(')) << call;
      }
    };
    spy::Log log;
    calls().print_cr(h, object.get(), text.data(), static_cast<uint32_t>(ample));
    expect_instance(log.calls());
    EXPECT_EQ(log.calls_of({"ork_print_space"}).front(),
              "ork_print_space(9,text,0,65536,cr_error)");
    EXPECT_EQ(log.calls_of({"ork_snprintf"}).front(),
              "ork_snprintf(9,text,65536,cr_error,'" + name + "@" + name + ": {\n')");
    log.clear();
    calls().toxml_cr(h, object.get(), text.data(), static_cast<uint32_t>(ample));
    expect_instance(log.calls());
    EXPECT_EQ(log.calls_of({"start_tag"}).front(),
              "start_tag(9,text,'" + name + "',65536,0,cr_error)");
    const std::string last = log.calls().back();
    EXPECT_TRUE(last.starts_with("end_tag(9,text+") &&
                last.find(",'" + name + "',") != std::string::npos)
        << last;
    EXPECT_EQ(h->cr_error, 0u);
  }
}

TEST_P(FormCalls, of_unmarshal_hand_on_the_room_that_is_left_and_reuse_storage) {
  SpiedHandle h;
  const Bytes image = marshalled(h, calls(), filled(h, calls(), 2).get());
  const Object object(h, calls());
  spy::name(image.data(), image.size(), "image");
  const spy::Log log;
  calls().unmarshal(h, instance, image.data(), object.get(), static_cast<int32_t>(image.size()), 3,
                    &h.err);
  EXPECT_EQ(h.err, 0u);
  size_t primitives = 0;
  for (const std::string& call : log.calls()) {
    const size_t from = call.find("_unmarshal(7,image+");
    if (from != std::string::npos && !call.starts_with("_ork_")) {
      ++primitives;
      const size_t left = image.size() - std::stoul(call.substr(call.find('+') + 1));
      EXPECT_TRUE(call.ends_with("," + std::to_string(left) + ",3,err)")) << call;
    }
  }
  EXPECT_GT(primitives, 0u);
}

// How many elements reading a record makes when each of its arrays has so many in the document: one
// more for each array, which finds none.
unsigned record_scratches(const wayfind_record& record, unsigned elements) {
  unsigned result = 0;
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.cls == WAYFIND_RECORD_ARRAY) {
      result += elements + 1 + elements * record_scratches(*field.record, elements);
    } else if (field.record != nullptr) {
      result += record_scratches(*field.record, elements);
    }
  }
  return result;
}

// What is allocated next after each start is the scratch; behind the scratch that finds nothing
// there is no start.
TEST_P(FormCalls, of_from_xml_start_the_trace_module_before_each_record_scratch) {
  for (const unsigned elements : {0U, 2U}) {
    SpiedHandle h;
    const Document document = parsed(as_xml(h, calls(), filled(h, calls(), elements).get()));
    const Object object(h, calls());
    spy::Log log;
    calls().from_xml(h, instance, (std::string("//") + calls().name()).c_str(), document.get(),
                     object.get(), &h.err, nullptr, 0);
    EXPECT_EQ(h.err, 0u);
    EXPECT_EQ(log.count("flight_module_init_fn"), record_scratches(*calls().schema, elements));
    std::vector<std::string> made = log.calls_of({"flight_module_init_fn", "alloc_fn"});
    for (made.emplace_back("nothing"); made.size() > 1; made.erase(made.begin())) {
      EXPECT_TRUE(!made[0].starts_with("flight_module_init_fn(") ||
                  made[1].starts_with("alloc_fn("))
          << made[1];
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Records, FormCalls, testing::Range(0U, wayfind_record_count), short_name);

}  // namespace
