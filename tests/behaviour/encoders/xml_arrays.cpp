// Variable arrays as XML and back: elements by their path, each read into a scratch element first.
#include "behaviour/encoders/xml_form.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

class XmlArrays : public XmlForm {
 protected:
  static std::string path_with(const std::string& elements) {
    return "<fwe_cl_wayfind_sel_lb_path_st>\n" + elements + "</fwe_cl_wayfind_sel_lb_path_st>\n";
  }

  // What a sel_lb_path_st holds, as many as it counts. Whatever error stands has no part in it.
  std::vector<uint32_t> hops_of(const Object& object) const {
    auto* const record = static_cast<fwe_cl_wayfind_sel_lb_path_st*>(object.get());
    uint32_t own = 0;
    std::vector<uint32_t> hops(
        fwe_cl_wayfind_sel_lb_path_st_num_hops_get_value(handle, instance, record, &own));
    fwe_cl_wayfind_sel_lb_path_st_path_id_get_mem(handle, instance, record, hops.data(),
                                                  static_cast<uint32_t>(hops.size()), &own);
    EXPECT_EQ(own, 0u);
    return hops;
  }
  using Hops = std::vector<uint32_t>;
};

TEST_F(XmlArrays, repeats_its_plain_name_and_counts_without_a_state) {
  const Handle tracking(ORK_TRACKING_ON);
  const Object object(tracking, path);
  auto* const record = static_cast<fwe_cl_wayfind_sel_lb_path_st*>(object.get());
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(tracking, instance, record, 0, 4, &err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(tracking, instance, record, 2, 5, &err);
  EXPECT_EQ(as_xml(tracking, path, object.get()),
            path_with("<num_hops>3</num_hops>\n<path_id state=\"2\">4</path_id>\n"
                      "<path_id>0</path_id>\n<path_id state=\"2\">5</path_id>\n"));
}

TEST_F(XmlArrays, that_is_empty_is_the_count_alone) {
  const Object object(handle, path);
  EXPECT_EQ(as_xml(handle, path, object.get()), path_with("<num_hops>0</num_hops>\n"));
}

TEST_F(XmlArrays, is_read_by_its_elements_and_not_by_its_count) {
  const Object object(handle, path);
  read(path, path_with("<num_hops>9</num_hops><path_id>4</path_id><path_id>5</path_id>"), object);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(hops_of(object), (Hops{4, 5}));
}

TEST_F(XmlArrays, is_overwritten_by_index_and_keeps_what_is_behind) {
  const Object object = filled(handle, path, 3);
  const uint32_t last = hops_of(object).back();
  read(path, path_with("<path_id>4</path_id><path_id>5</path_id>"), object);
  EXPECT_EQ(hops_of(object), (Hops{4, 5, last}));
  read(path, path_with("<num_hops>0</num_hops>"), object);
  EXPECT_EQ(hops_of(object), (Hops{4, 5, last}));
  EXPECT_EQ(err, 0u);
}

TEST_F(XmlArrays, ends_with_the_walk_at_a_wrong_element) {
  const Object object(handle, path);
  read(path, path_with("<path_id>4</path_id><path_id>no</path_id><path_id>5</path_id>"), object);
  EXPECT_EQ(err, 22u);
  EXPECT_STREQ(reason, "Failed xpath: //fwe_cl_wayfind_sel_lb_path_st/path_id[2]");
  EXPECT_EQ(hops_of(object), Hops{4});
}

// A wrong record gives back all that was read into its scratch, also the fields that the older
// release's records do not know.
TEST_F(XmlArrays, of_records_ends_at_a_wrong_one_and_loses_nothing) {
  const Calls& calls = calls_of("fwe_cl_wayfind_select_tc_lb_channels_st");
  const std::string name = calls.name();
  const std::string good = "<channels><weight>7</weight></channels>";
  const struct {
    const char* content;
    uint32_t error;
    const char* field;
  } wrongs[] = {{"<weight>x</weight>", 22, "weight"},
                {"<path_rf><path_id_str><hop_id_str>of 14 letters.</hop_id_str></path_id_str>"
                 "<path_id_str><hop_id_str>more than that.</hop_id_str></path_id_str></path_rf>",
                 28, "path_rf/path_id_str[2]/hop_id_str"}};
  const TypeList oldest = release_list(0);
  for (const bool older : {false, true}) {
    if (older) {
      handle.set_peer(oldest.get());
    }
    for (const auto& wrong : wrongs) {
      const Object object(handle, calls);
      auto* const record = static_cast<fwe_cl_wayfind_select_tc_lb_channels_st*>(object.get());
      err = 0;
      read(calls,
           "<" + name + ">" + good + "<channels>" + wrong.content + "</channels>" + good + "</" +
               name + ">",
           object);
      EXPECT_EQ(err, wrong.error);
      EXPECT_EQ(reason, "Failed xpath: //" + name + "/channels[2]/" + wrong.field);
      uint32_t own = 0;
      EXPECT_EQ(fwe_cl_wayfind_select_tc_lb_channels_st_num_channels_get_value(handle, instance,
                                                                               record, &own),
                1u);
      auto* const first =
          fwe_cl_wayfind_select_tc_lb_channels_st_channels_get(handle, instance, record, 0, &own);
      EXPECT_EQ(reinterpret_cast<ork_object*>(first)->variant, older ? 0 : 1);
      EXPECT_EQ(fwe_cl_wayfind_select_loadbalance_channel_st_weight_get_value(handle, instance,
                                                                              first, &own),
                7u);
      EXPECT_EQ(handle.memory().live_blocks, 2u) << "the record and its array";
    }
  }
}

// A store that is refused leaves the error slot as it is: the walk goes on, and what was read into
// the scratch is not lost, also in fields of variants that the scratch has not reached.
TEST_F(XmlArrays, of_records_that_refuses_an_element_goes_on_and_loses_nothing) {
  const Calls& calls = calls_of("fwe_cl_wayfind_select_tc_lb_channels_st");
  const std::string name = calls.name();
  const std::string text = "<" + name +
                           "><channels><weight>7</weight><path_rf><path_id_str><hop_id_str>abc</"
                           "hop_id_str></path_id_str>" +
                           "</path_rf></channels></" + name + ">";
  const TypeList oldest = release_list(0);
  const TypeList without = release_list(0, name, -1);
  for (const bool gate : {true, false}) {
    handle.set_peer(gate ? without.get() : oldest.get());
    const Object object(handle, calls);
    auto* const record = static_cast<fwe_cl_wayfind_select_tc_lb_channels_st*>(object.get());
    fwe_cl_wayfind_select_loadbalance_channel_st* first = nullptr;
    if (!gate) {  // the element's own set refuses a storage of another layout
      read(calls, "<" + name + "><channels><weight>5</weight></channels></" + name + ">", object);
      first =
          fwe_cl_wayfind_select_tc_lb_channels_st_channels_get(handle, instance, record, 0, &err);
      reinterpret_cast<ork_object*>(first)->variant_cap = 0;
    }
    read(calls, text, object);
    EXPECT_EQ(err, 0u);
    uint32_t own = 0;
    if (first != nullptr) {
      EXPECT_EQ(fwe_cl_wayfind_select_loadbalance_channel_st_weight_get_value(handle, instance,
                                                                              first, &own),
                5u);
    }
    EXPECT_EQ(handle.memory().live_blocks, gate ? 1u : 2u) << "the record, and its array";
    if (first != nullptr) {
      reinterpret_cast<ork_object*>(first)->variant_cap = 1;
    }
    handle.set_peer(nullptr);
  }
}

// An element that the array took over takes what it read along, and nothing of it is taken apart
// twice.
TEST_F(XmlArrays, of_records_takes_over_what_its_elements_read) {
  const Calls& calls = calls_of("fwe_cl_wayfind_select_tc_lb_channels_st");
  const std::string name = calls.name();
  const TypeList oldest = release_list(0);
  for (const bool older : {false, true}) {
    const Object object(handle, calls);
    if (older) {
      handle.set_peer(oldest.get());
    }
    read(calls,
         "<" + name +
             "><channels><path_rf><path_id_str><hop_id_str>abc</hop_id_str></path_id_str></"
             "path_rf></channels></" +
             name + ">",
         object);
    EXPECT_EQ(err, 0u);
    auto* const first = fwe_cl_wayfind_select_tc_lb_channels_st_channels_get(
        handle, instance, static_cast<fwe_cl_wayfind_select_tc_lb_channels_st*>(object.get()), 0,
        &err);
    handle.set_peer(nullptr);
    reinterpret_cast<ork_object*>(first)->variant = 1;  // as a reader of the newer release has it
    auto* const path_rf =
        fwe_cl_wayfind_select_loadbalance_channel_st_path_rf_get(handle, instance, first, &err);
    auto* const hop = fwe_cl_wayfind_sel_lb_path_human_readable_st_path_id_str_get(
        handle, instance, path_rf, 0, &err);
    ASSERT_NE(hop, nullptr);
    char letters[16] = "";
    fwe_cl_wayfind_hop_id_readable_format_st_hop_id_str_get(handle, instance, hop, letters,
                                                            sizeof letters, &err);
    EXPECT_STREQ(letters, "abc");
    EXPECT_EQ(handle.memory().live_blocks, 3u) << "the record, its array and the element's own";
  }
}

TEST_F(XmlArrays, without_a_scratch_element_is_12_whatever_becomes_of_the_next_path) {
  const Calls& calls = calls_of("fwe_dp_wayfind_debug_data");
  // "/is_none" makes 257 characters behind two slashes and the longer name.
  for (const std::string& name : {std::string(calls.name()), std::string(247, 'n')}) {
    const Object object(handle, calls);
    err = 0;
    ork_handle_fail_allocation(handle, 1);
    read(calls, "<" + name + "><dbg_per_complex/><is_none>1</is_none></" + name + ">", object,
         ("//" + name).c_str());
    EXPECT_EQ(err, 12u) << name;
    EXPECT_EQ(ork_handle_last_error(handle), 12u) << name;
    uint32_t own = 0;
    EXPECT_EQ(fwe_dp_wayfind_debug_data_is_none_get_value(
                  handle, instance, static_cast<fwe_dp_wayfind_debug_data*>(object.get()), &own),
              0u);
  }
}

// Each element takes two allocations: its scratch, and the longer block. A refused one is told even
// where the next path is one that does not fit.
TEST_F(XmlArrays, keeps_what_was_stored_before_a_refusal_and_ends_at_a_path_that_does_not_fit) {
  // "/path_id[9]" makes 255 characters behind 244, "/path_id[10]" 256.
  const std::string name(242, 'n');
  std::string text = "<" + name + ">";
  Hops fitting;
  for (uint32_t i = 1; i <= 12; ++i) {
    text += "<path_id>" + std::to_string(100 + i) + "</path_id>";
    if (i < 10) {
      fitting.push_back(100 + i);
    }
  }
  text += "</" + name + ">";
  for (uint32_t nth = 1; nth <= 20; ++nth) {
    const Object object(handle, path);
    err = 0;
    ork_handle_fail_allocation(handle, nth);
    read(path, text, object, ("//" + name).c_str());
    ork_handle_fail_allocation(handle, 0);
    EXPECT_EQ(err, nth < 20 ? 12u : 0u) << "allocation " << nth;
    if (err != 0) {
      EXPECT_EQ(ork_handle_last_error(handle), 12u) << "allocation " << nth;
    }
    EXPECT_EQ(hops_of(object), Hops(fitting.begin(), fitting.begin() + (nth - 1) / 2))
        << "allocation " << nth;
  }
}

}  // namespace
