#include "ork/flight.h"

#include <dlfcn.h>

#include <fstream>
#include <sstream>

#include "support.h"

namespace platform_test {
namespace {

const unsigned char section[16] = {0xd8, 0x38, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};

std::vector<flight_trace> ring() {
  std::vector<flight_trace> traces;
  flight_ring_each(
      [](void* ctx, const flight_trace* trace) {
        static_cast<std::vector<flight_trace>*>(ctx)->push_back(*trace);
      },
      &traces);
  return traces;
}

TEST(Flight, module_id_is_given_once) {
  uint16_t id = 0;
  uint32_t once = 0;
  EXPECT_EQ(flight_module_init_fn("module", &id, &once), 0);
  const uint16_t first = id;
  EXPECT_NE(first, 0);
  EXPECT_NE(once, 0u);
  EXPECT_EQ(flight_module_init_fn("module", &id, &once), 0);
  EXPECT_EQ(id, first);
}

TEST(Flight, every_pattern_keeps_its_arguments) {
  flight_ring_clear();
  __FLf_0(section, 0, 3, ORK_LEVEL_FATAL);
  __FLf_1(section, 1, 3, ORK_LEVEL_ERROR, "a");
  __FLf_4(section, 2, 3, ORK_LEVEL_INFO, 4);
  __FLf_11(section, 3, 3, ORK_LEVEL_DEBUG, "a", nullptr);
  __FLf_15(section, 4, 3, ORK_LEVEL_DEBUG, "a", section);
  __FLf_44(section, 5, 3, ORK_LEVEL_DEBUG, 4, 5);
  __FLf_51(section, 6, 3, ORK_LEVEL_DEBUG, section, "b");
  __FLf_111(section, 7, 3, ORK_LEVEL_DEBUG, "a", "b", "c");
  __FLf_444(section, 8, 3, ORK_LEVEL_DEBUG, 4, 5, 6);
  const auto traces = ring();
  ASSERT_EQ(traces.size(), 9u);
  const uint8_t counts[] = {0, 1, 1, 2, 2, 2, 2, 3, 3};
  for (uint32_t i = 0; i < traces.size(); ++i) {
    EXPECT_EQ(traces[i].index, i);
    EXPECT_EQ(traces[i].n_arguments, counts[i]);
    EXPECT_EQ(std::memcmp(traces[i].section_id, section, 16), 0);
  }
  EXPECT_EQ(traces[1].level_word, 0x3000000u);
  EXPECT_STREQ(traces[3].text[1], "(null)");
  EXPECT_EQ(traces[4].number[1], reinterpret_cast<uintptr_t>(section));
  EXPECT_EQ(traces[6].kind[0], 5);
  EXPECT_STREQ(traces[7].text[2], "c");
  EXPECT_EQ(traces[8].number[2], 6u);
}

TEST(Flight, long_texts_are_cut) {
  flight_ring_clear();
  const std::string text(1000, 'x');
  __FLf_1(section, 0, 0, ORK_LEVEL_ERROR, text.c_str());
  EXPECT_EQ(std::strlen(ring().at(0).text[0]), 255u);
}

TEST(Flight, ring_keeps_the_newest) {
  flight_ring_clear();
  for (uint32_t i = 0; i < 5000; ++i) {
    __FLf_4(section, i, 0, ORK_LEVEL_DEBUG, i);
  }
  const auto traces = ring();
  EXPECT_LT(traces.size(), 5000u);
  EXPECT_EQ(traces.back().index, 4999u);
  flight_ring_clear();
}

std::string content_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

// What a file holds that was opened and closed.
std::string untouched_file() {
  const std::string path = testing::TempDir() + "flight_test.untouched";
  uint32_t err = 0;
  flight_open(path.c_str(), &err);
  flight_close();
  const std::string content = err == 0 ? content_of(path) : "";
  std::remove(path.c_str());
  return content;
}

TEST(FlightDeathTest, file_before_any_module_or_trace_has_a_head_without_build_id) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process in which nobody registered
  EXPECT_EXIT(std::exit(untouched_file() == std::string("FLIGHT1\n\0", 9) ? 0 : 1),
              testing::ExitedWithCode(0), "");
}

TEST(Flight, head_names_the_file_of_a_known_module) {
  static uint16_t id = 0;
  static uint32_t once = 0;
  flight_module_init_fn("known", &id, &once);
  const std::string bytes = untouched_file();
  ASSERT_GT(bytes.size(), 29u);
  EXPECT_EQ(bytes.substr(0, 9), "FLIGHT1\n\x14");
  EXPECT_EQ(bytes.substr(29, 4), "FLFT");
}

TEST(Flight, file_holds_head_modules_the_traced_file_and_the_trace) {
  const std::string path = testing::TempDir() + "flight_test.trace";
  uint16_t id = 0;
  uint32_t once = 0;
  flight_module_init_fn("in_the_file", &id, &once);
  uint32_t err = 0;
  flight_open(path.c_str(), &err);
  ASSERT_EQ(err, 0u);
  __FLf_1(section, 17, id, ORK_LEVEL_ERROR, "the argument");
  flight_close();
  __FLf_1(section, 18, id, ORK_LEVEL_ERROR, "after the end");
  const std::string bytes = content_of(path);
  EXPECT_EQ(bytes.substr(0, 8), "FLIGHT1\n");
  ASSERT_GT(bytes.size(), 9u);
  const std::string build_id = bytes.substr(9, static_cast<uint8_t>(bytes[8]));
  EXPECT_EQ(build_id.size(), 20u) << "of this program: the trace came from it";
  EXPECT_EQ(bytes.substr(9 + build_id.size(), 4), "FLFT");
  EXPECT_NE(bytes.find(build_id, 9 + build_id.size()), std::string::npos)
      << "again in front of the file's first trace";
  EXPECT_NE(bytes.find("in_the_file"), std::string::npos);
  EXPECT_NE(bytes.find(std::string(reinterpret_cast<const char*>(section), 16)), std::string::npos);
  EXPECT_NE(bytes.find("the argument"), std::string::npos);
  EXPECT_EQ(bytes.find("after the end"), std::string::npos);
  std::remove(path.c_str());
  flight_open("/nonexistent/trace", &err);
  EXPECT_EQ(err, 2u);
}

// Raises a trace with texts of that file, which is loaded for it alone; gives back where the file
// lay.
const void* trace_from(const char* file) {
  void* const module = dlopen(file, RTLD_NOW);
  EXPECT_NE(module, nullptr) << dlerror();
  const auto* const texts = static_cast<const unsigned char*>(dlsym(module, "traced_section"));
  Dl_info info;
  EXPECT_NE(dladdr(texts, &info), 0);
  __FLf_0(texts, 0, 0, ORK_LEVEL_ERROR);
  dlclose(module);
  return info.dli_fbase;
}

TEST(Flight, a_file_loaded_where_another_was_is_a_traced_file_of_its_own) {
  const std::string path = testing::TempDir() + "flight_test.reloaded";
  uint32_t err = 0;
  flight_open(path.c_str(), &err);
  ASSERT_EQ(err, 0u);
  const void* const first = trace_from(TRACED_1);
  EXPECT_EQ(trace_from(TRACED_2), first) << "else this shows nothing";
  EXPECT_EQ(trace_from(TRACED_1), first);
  flight_close();
  const std::string bytes = content_of(path);
  std::remove(path.c_str());
  const auto body_of = [](char number, const std::string& build_id, const char* file) {
    return std::string({number, 0, 4}) + build_id + file;
  };
  for (const std::string& traced :
       {body_of(0, "\1\1\1\1", TRACED_1), body_of(1, "\2\2\2\2", TRACED_2)}) {
    const size_t at = bytes.find(traced);
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(bytes.find(traced, at + 1), std::string::npos) << "told once";
  }
}

}  // namespace
}  // namespace platform_test
