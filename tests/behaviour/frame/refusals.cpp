// What a refusal leaves undone: nothing behind it is read, recorded or marked.
#include <functional>

#include "behaviour/frame/objects.h"

namespace frame {

namespace {

// A recording handle whose runtime raises no variant, and one object that has no field.
struct Refusals : testing::Test {
  SpiedHandle h{tracked_and_recorded};
  spy::Replacement stay = spy::answer(orklib_adjust_variant, 0);

  // All that a getter does, with the record's variant read as the field's kind wants it; a setter
  // adjusts the record first.
  void reads(const SpiedObject& obj, const std::string& variant, const std::function<void()>& get) {
    expect(obj, {"ork_clear_last_error()", variant, "ork_store_epoch_err(43,err)"}, get);
  }
  void writes(const SpiedObject& obj, const std::string& record, const std::string& variant,
              const std::function<void()>& set) {
    expect(obj,
           {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
            "orklib_adjust_variant(7,obj,type(" + record + "),0,err)", variant,
            "ork_store_epoch_err(43,err)"},
           set);
  }

 private:
  void expect(const SpiedObject& obj, const std::vector<std::string>& calls,
              const std::function<void()>& access) {
    obj.header().variant = -1;
    const Snapshot before = obj.snapshot();
    spy::Log log;
    access();
    EXPECT_CALLS(log, calls);
    EXPECT_TRUE(before.unchanged());
    EXPECT_EQ(h.err, 0u);
    EXPECT_EQ(h.last_error(), 43u);
    obj.header().variant = 0;
  }
};

}  // namespace

TEST_F(Refusals, of_a_value_ends_the_call) {
  const std::string record = "fwe_cl_wayfind_mem_st";
  const std::string variant = "ork_get_instance_variant(obj,1,0)";
  SpiedObject obj(h, record);
  const uint32_t src = 1;
  reads(obj, variant,
        [&] { EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get(h, instance, obj, &h.err), nullptr); });
  reads(obj, variant,
        [&] { EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(h, instance, obj, &h.err), 0u); });
  writes(obj, record, variant,
         [&] { fwe_cl_wayfind_mem_st_fwe_num_set(h, instance, obj, &src, &h.err); });
  writes(obj, record, variant,
         [&] { fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 1, &h.err); });
}

TEST_F(Refusals, of_an_enum_ends_the_call) {
  const std::string record = "fwe_cl_wayfind_chan_nb_st";
  const std::string variant = "ork_get_instance_variant(obj,1,1)";
  SpiedObject obj(h, record);
  auto* const src = fwe_cl_wayfind_chan_tx_state_e_create(h, instance);
  reads(obj, variant, [&] {
    EXPECT_EQ(fwe_cl_wayfind_chan_nb_st_tx_state_get(h, instance, obj, &h.err), nullptr);
  });
  reads(obj, variant, [&] {
    EXPECT_EQ(fwe_cl_wayfind_chan_nb_st_tx_state_get_value(h, instance, obj, &h.err), 0u);
  });
  writes(obj, record, variant,
         [&] { fwe_cl_wayfind_chan_nb_st_tx_state_set(h, instance, obj, src, &h.err); });
  writes(obj, record, variant,
         [&] { fwe_cl_wayfind_chan_nb_st_tx_state_set_value(h, instance, obj, 1, &h.err); });
  fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, src);
}

TEST_F(Refusals, of_an_embedded_record_ends_the_call) {
  const std::string record = "fwe_cl_wayfind_nb_channel_data";
  const std::string variant = "ork_get_instance_variant(obj,1,0)";
  SpiedObject obj(h, record);
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  reads(obj, variant, [&] {
    EXPECT_EQ(fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, obj, &h.err), nullptr);
  });
  writes(obj, record, variant,
         [&] { fwe_cl_wayfind_nb_channel_data_mem_set(h, instance, obj, src, &h.err); });
}

// The mode word is read for a copy alone; a corrupted one would end the process.
TEST_F(Refusals, of_a_copy_and_a_copy_onto_itself_come_before_the_mode_word) {
  SpiedObject dst(h, "fwe_cl_wayfind_mem_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  dst.header().variant = -1;
  h->sttr_info->sttr_mode = 7;
  spy::Log log;
  fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  dst.header().variant = 0;
  fwe_cl_wayfind_mem_st_set(h, instance, dst, dst, &h.err);
  EXPECT_EQ(log.count("trace"), 0u);
  EXPECT_EQ(log.count("orklib_adjust_variant"), 2u);
  h->sttr_info->sttr_mode = ORK_STTR_ON;
}

}  // namespace frame
