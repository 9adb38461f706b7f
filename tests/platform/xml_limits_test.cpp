// What a document may hold, and that finding out costs no more than reading it.
#include <sys/resource.h>

#include <ctime>
#include <iostream>

#include "support.h"

namespace platform_test {
namespace {

// The reason for a refusal, or nothing for a text that is accepted.
std::string refusal(std::string_view text) {
  uint32_t err = 0;
  char reason[128] = "";
  const Xml xml(ork_xml_parse(text.data(), text.size(), &err, reason, sizeof reason));
  EXPECT_EQ(err, xml ? 0u : 22u);
  EXPECT_EQ(xml == nullptr, *reason != '\0');
  return reason;
}

std::string times(size_t count, const std::string& text) {
  std::string all;
  all.reserve(count * text.size());
  for (size_t i = 0; i < count; ++i) {
    all += text;
  }
  return all;
}

std::string attributes(size_t count) {
  std::string all;
  for (size_t i = 0; i < count; ++i) {
    all += " a" + std::to_string(i) + "='1'";
  }
  return all;
}

// The value of the element v in the document.
std::string value_in(const std::string& text) {
  const Xml xml = parse_xml(text);
  char value[16] = "";
  EXPECT_EQ(xml_get_element_value(xml.get(), "//v", value, sizeof value, 0), 0u);
  return value;
}

TEST(XmlLimits, attributes_of_one_element) {
  EXPECT_EQ(refusal("<m>\n<n" + attributes(64) + "/></m>"), "");
  EXPECT_EQ(refusal("<m>\n<n" + attributes(65) + "/></m>"),
            "line 2: more than 64 attributes in one element");
  EXPECT_EQ(refusal("<m>\n<n" + attributes(40'000) + "/></m>"),
            "line 2: more than 65536 bytes in one start tag");
}

TEST(XmlLimits, bytes_of_a_start_tag) {
  const auto tag = [](size_t bytes) {
    const std::string begin = "<n a='", end = "'>";
    return begin + std::string(bytes - begin.size() - end.size(), 'x') + end;
  };
  EXPECT_EQ(refusal(tag(65'536) + "</n>"), "");
  EXPECT_EQ(refusal("<m>\n\n" + tag(65'537) + "</n></m>"),
            "line 3: more than 65536 bytes in one start tag");
}

TEST(XmlLimits, namespaces_of_a_document) {
  const auto document = [](size_t count) {
    std::string text = "<m>";
    for (size_t i = 0; i < count; ++i) {
      text += "<n xmlns:n" + std::to_string(i) + "='urn:n'/>";
    }
    return text + "</m>";
  };
  EXPECT_EQ(refusal(document(64)), "");
  EXPECT_EQ(refusal(document(65)), "line 1: more than 64 declarations of namespaces");
}

TEST(XmlLimits, depth) {
  EXPECT_EQ(refusal(times(64, "<a>") + times(64, "</a>")), "");
  EXPECT_EQ(refusal(times(65, "<a>\n") + times(65, "</a>")),
            "line 65: more than 64 elements inside one another");
}

TEST(XmlLimits, bytes_of_a_text) {
  const size_t most = size_t{1} << 20;
  EXPECT_EQ(refusal("<m>" + std::string(most, 'x') + "</m>"), "");
  EXPECT_EQ(refusal("<m>" + std::string(most + 1, 'x') + "</m>"),
            "line 1: more than 1048576 bytes in one text");
  EXPECT_EQ(refusal("<m>" + std::string(most, 'x') + "<n/>" + std::string(most, 'x') + "</m>"), "");
  EXPECT_EQ(refusal("<m>" + times(most + 1, "&#65;") + "</m>"),
            "line 1: more than 1048576 bytes in one text");
  EXPECT_EQ(refusal("<m>" + std::string(most, 'x') + "<![CDATA[x]]></m>"),
            "line 1: more than 1048576 bytes in one text");
  EXPECT_EQ(refusal("<m><!--" + std::string(most, 'x') + "--></m>"), "");
  EXPECT_EQ(refusal("<m><!--" + std::string(most + 1, 'x') + "--></m>"),
            "line 1: more than 1048576 bytes in one comment");
  EXPECT_EQ(refusal("<m><?i " + std::string(most, 'x') + "?></m>"),
            "line 1: more than 1048576 bytes in one instruction");
}

TEST(XmlLimits, parts_of_a_document) {
  const std::string expected = "line 2: more than 2000000 elements, attributes and comments";
  EXPECT_EQ(refusal("<m>\n" + times(2'000'000, "<a/>") + "</m>"), expected);
  EXPECT_EQ(refusal("<m>\n" + times(500'000, "<a x='' y='' z=''/>") + "</m>"), expected);
  EXPECT_EQ(refusal("<m>\n" + times(2'000'000, "<!---->") + "</m>"), expected);
  EXPECT_EQ(refusal("<m>\n" + times(2'000'000, "<?i?>") + "</m>"), expected);
  EXPECT_EQ(refusal("<m>\n" + times(2'000'000, "<![CDATA[]]>") + "</m>"), expected);
}

// Says what reading cost.
void expect_read(const std::string& text) {
  timespec begin{}, end{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &begin);
  EXPECT_EQ(refusal(text), "");
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::cout << text.size() << " bytes: "
            << (end.tv_sec - begin.tv_sec) * 1000 + (end.tv_nsec - begin.tv_nsec) / 1'000'000
            << " ms, " << usage.ru_maxrss / 1024 << " MiB at most\n";
}

TEST(XmlLimits, document_of_the_most_elements_is_read) {
  expect_read("<m>" + times(1'999'999, "<a/>x") + "</m>");
}

TEST(XmlLimits, document_of_the_most_attributes_is_read) {
  const std::string element = "<a" + attributes(63) + "/>x";
  expect_read("<m x=''>" + times((2'000'000 - 2) / 64, element) + "</m>");
}

// The size is looked at before anything is read.
TEST(XmlLimits, bytes_of_a_document) {
  const std::string text = "<m/>";
  const size_t most = size_t{256} << 20;
  EXPECT_EQ(refusal({text.data(), most + 1}), "line 1: more than 268435456 bytes");
}

TEST(XmlLimits, what_only_looks_like_a_tag_is_none) {
  const std::string tag = "<n" + attributes(1000) + ">";
  EXPECT_EQ(value_in("<m><!-- " + tag + " --><v>1</v></m>"), "1");
  EXPECT_EQ(value_in("<m><?i " + tag + " ?><v>2</v></m>"), "2");
  EXPECT_EQ(value_in("<m><v><![CDATA[3]]></v><![CDATA[" + tag + "]]></m>"), "3");
  EXPECT_EQ(value_in("<m a=\"> b='1' \" b='>\"'><v>4</v></m>"), "4");
}

TEST(XmlLimits, documents_are_utf8_whatever_they_declare) {
  EXPECT_EQ(refusal("\xef\xbb\xbf<m>\xc3\xa9</m>"), "");
  EXPECT_EQ(refusal("<?xml version='1.0' encoding='ISO-8859-1'?><m>\xc3\xa9</m>"), "");
  EXPECT_EQ(refusal("<?xml version='1.0' encoding='UTF-7'?><m>+ADw-n</m>"), "");
  EXPECT_NE(refusal("<?xml version='1.0' encoding='ISO-8859-1'?><m>\xe9</m>"), "");
  for (const std::string_view utf16 :
       {std::string_view("\xff\xfe<\0m\0/\0>\0", 10), std::string_view("\xfe\xff\0<\0m\0/\0>", 10),
        std::string_view("<\0m\0/\0>\0", 8), std::string_view("\0<\0m\0/\0>", 8)}) {
    EXPECT_EQ(refusal(utf16), "line 1: a document has to be in UTF-8");
  }
}

// Where the last tag lies in the text makes no difference.
TEST(XmlLimits, long_document_may_end_with_a_long_tag) {
  const std::string line = "<value_of_a_field>1</value_of_a_field>\n";
  const std::string tag = "<n b='" + std::string(1000, 'x') + "'" + attributes(60) + "/>";
  EXPECT_EQ(refusal("<m>" + times(400'000, line) + tag + "</m>"), "");
}

double time_of(const std::string& text) {
  double least = 1e9;
  for (int attempt = 0; attempt < 3; ++attempt) {
    timespec begin{}, end{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &begin);
    refusal(text);
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
    least = std::min(least, static_cast<double>(end.tv_sec - begin.tv_sec) +
                                static_cast<double>(end.tv_nsec - begin.tv_nsec) * 1e-9);
  }
  return least;
}

// A start tag of many attributes is dear to the parser, so no text may bring it to one: neither a
// plain one nor one behind an error that a less exact reader would read over.
TEST(XmlLimits, no_text_costs_more_than_one_of_its_size) {
  const std::string tag = "<n" + attributes(20'000) + ">";
  const double fair =
      time_of("<m>" + times(tag.size() / 40, "<value_of_a_field>1</value_of_a_field>") + "</m>");
  for (const std::string& text : std::vector<std::string>{
           "<m>" + tag + "</n></m>", "<m><!-- \x01 " + tag + " --></m>",
           "<m><!-- -- " + tag + " --></m>", "<m><?1 " + tag + " ?></m>",
           "<?xml version='1.0' > " + tag + " ?><m/>", "<m><![CDATA[ \x01 " + tag + " ]]></m>",
           "<m a='<' " + tag + "</m>", "<m a=1 \"" + tag + "\"/>", "<m>&none;" + tag + "</m>",
           "<m>]]>" + tag + "</m>", "</m>" + tag, "<m/>" + tag, "<m><o></p>" + tag + "</m>",
           "<m>\xff" + tag + "</m>", "<m><![INCLUDE[" + tag + "]]></m>"}) {
    EXPECT_NE(refusal(text), "");
    EXPECT_LT(time_of(text), 10 * fair) << text.substr(0, 24);
  }
}

}  // namespace
}  // namespace platform_test
