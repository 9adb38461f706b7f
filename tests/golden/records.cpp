// Every form of every record, as the library gives it, against the files that the independent
// encoder wrote.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "behaviour/encoders/values.h"

namespace {

using namespace encoders;

std::string hex_lines(const Bytes& bytes) {
  std::string text;
  char piece[24];
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (i % 16 == 0) {
      std::snprintf(piece, sizeof piece, "%06zx ", i);
      text += piece;
    }
    std::snprintf(piece, sizeof piece, " %02x", bytes[i]);
    text += piece;
    if (i % 16 == 15 || i + 1 == bytes.size()) {
      text += "\n";
    }
  }
  return text;
}

std::string golden_case(const Calls& calls, unsigned release, uint32_t elements) {
  const TypeList list = release_list(release);
  std::string text =
      "== release " + std::to_string(release) + ", arrays of " + std::to_string(elements) + "\n";
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle([&](ork_options& options) {
      options.tracking = tracking;
      options.release = list.get();
    });
    const Object object = filled(handle, calls, elements);
    const char* const mode = tracking == ORK_TRACKING_ON ? "on" : "off";
    if (tracking == ORK_TRACKING_OFF) {
      for (const uint32_t seed : {0U, 0x9e3779b9U}) {
        char line[64];
        std::snprintf(line, sizeof line, "-- hash %08x: %08x\n", seed,
                      calls.hash(object.get(), seed));
        text += line;
      }
      text += "-- text\n" + printed(handle, calls, object.get());
    }
    const Bytes image = marshalled(handle, calls, object.get());
    text += std::string("-- wire, tracking ") + mode + ", " + std::to_string(image.size()) +
            " bytes\n" + hex_lines(image);
    text += std::string("-- xml, tracking ") + mode + "\n" + as_xml(handle, calls, object.get());
  }
  return text;
}

std::string document(const Calls& calls) {
  std::string text;
  for (unsigned release = 0; release <= deepest_variant(*calls.schema); ++release) {
    for (const uint32_t elements : {0U, 1U, 3U}) {
      if (elements == 0 || holds_arrays(*calls.schema)) {
        text += golden_case(calls, release, elements);
      }
    }
  }
  return text;
}

class GoldenRecords : public testing::TestWithParam<unsigned> {};

TEST_P(GoldenRecords, are_what_the_independent_encoder_wrote) {
  const Calls& calls = all_records()[GetParam()];
  std::ifstream file(std::string(WAYFIND_GOLDEN_RECORDS) + "/" + calls.name() + ".golden",
                     std::ios::binary);
  ASSERT_TRUE(file) << "no golden file";
  std::istringstream got(document(calls));
  std::string wanted_line;
  std::string got_line;
  std::string heading;
  for (unsigned number = 1;; ++number) {
    const bool more_wanted = !std::getline(file, wanted_line).fail();
    const bool more_got = !std::getline(got, got_line).fail();
    ASSERT_EQ(more_wanted, more_got) << "line " << number << ", " << heading;
    if (!more_wanted) {
      break;
    }
    heading = wanted_line.starts_with("== ") ? wanted_line : heading;
    ASSERT_EQ(wanted_line, got_line) << "line " << number << ", " << heading;
  }
}

INSTANTIATE_TEST_SUITE_P(Records, GoldenRecords, testing::Range(0U, wayfind_record_count),
                         short_name);

}  // namespace
