// Reading arrays: elements of one name, each by its index.
#include "support.h"

namespace platform_test {
namespace {

// Two records with two arrays each, whose texts are made of name, record and index. Paths of the
// plain kind and of XPath have a document each: the plain ones go on from where the one before them
// led.
class XmlArrays : public testing::Test {
 protected:
  static constexpr uint32_t size = 5;

  static std::string text() {
    std::string records = "<m>";
    for (const char* record : {"1", "2"}) {
      records += "<r>";
      for (uint32_t i = 1; i <= size; ++i) {
        const std::string tail = std::string(record) + "." + std::to_string(i);
        records += "<a>a" + tail + "</a><x:a xmlns:x='urn:x'/>\n<b>b" + tail + "</b>";
      }
      records += "</r>";
    }
    return records + "</m>";
  }

  static std::string value(const Xml& xml, const std::string& path) {
    char content[16] = "";
    return xml_get_element_value(xml.get(), path.c_str(), content, sizeof content, 0) == 0 ? content
                                                                                           : "none";
  }

  void expect_read(uint32_t record, char name, uint32_t index) {
    const std::string inside =
        "[" + std::to_string(record) + "]/" + name + "[" + std::to_string(index) + "]";
    const std::string expected = name + std::to_string(record) + "." + std::to_string(index);
    EXPECT_EQ(value(plain_, "(//r)" + inside), index <= size ? expected : "none") << inside;
    EXPECT_EQ(value(xpath_, "/m/r" + inside), index <= size ? expected : "none") << inside;
  }

 private:
  Xml plain_ = parse_xml(text());
  Xml xpath_ = parse_xml(text());
};

TEST_F(XmlArrays, elements_are_found_in_any_order) {
  for (uint32_t before = 1; before <= size + 1; ++before) {
    for (uint32_t index = 1; index <= size + 2; ++index) {
      expect_read(1, 'a', before);
      expect_read(1, 'a', index);
    }
  }
}

TEST_F(XmlArrays, arrays_of_two_names_may_be_read_in_turn) {
  for (uint32_t index = 1; index <= size + 1; ++index) {
    expect_read(1, 'a', index);
    expect_read(1, 'b', index);
    expect_read(1, 'b', size + 2 - index);
  }
}

TEST_F(XmlArrays, arrays_of_two_parents_may_be_read_in_turn) {
  for (uint32_t index = 1; index <= size + 1; ++index) {
    expect_read(1, 'a', index);
    expect_read(2, 'a', index);
  }
}

// A walk from the front for each of them would take minutes.
TEST_F(XmlArrays, long_ones_are_read_in_one_pass) {
  constexpr uint32_t many = 200'000;
  std::string text = "<m>";
  for (uint32_t i = 1; i <= many; ++i) {
    text += "<n><v>" + std::to_string(i) + "</v></n>";
  }
  const Handle handle;
  const Xml xml = parse_xml(text + "</m>");
  uint32_t err = 0;
  uint32_t right = 0;
  for (uint32_t i = 1; i <= many; ++i) {
    const std::string path = "//m/n[" + std::to_string(i) + "]";
    uint32_t number = 0;
    for (const char* field : {"", "/v"}) {
      u_int32_from_xml(handle.get(), 0, (path + field).c_str(), xml.get(), &number, &err, nullptr,
                       0);
      right += number == i ? 1 : 0;
      number = 0;
    }
  }
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(right, 2 * many);
}

}  // namespace
}  // namespace platform_test
