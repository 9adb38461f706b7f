#include <array>

#include "support.h"

namespace platform_test {
namespace {

std::string refusal(std::string_view text) {
  uint32_t err = 0;
  char reason[128] = "";
  EXPECT_EQ(ork_xml_parse(text.data(), text.size(), &err, reason, sizeof reason), nullptr);
  EXPECT_EQ(err, 22u);
  return reason;
}

TEST(XmlWrite, elements_carry_a_state_that_is_not_zero) {
  const Handle handle;
  char buffer[128];
  uint32_t err = 0;
  const uint32_t value = 7;
  EXPECT_EQ(u_int32_to_xml(handle.get(), 0, "n", buffer, &value, sizeof buffer, 0, &err), 9u);
  EXPECT_STREQ(buffer, "<n>7</n>\n");
  u_int32_to_xml(handle.get(), 0, "n", buffer, &value, sizeof buffer, 2, &err);
  EXPECT_STREQ(buffer, "<n state=\"2\">7</n>\n");
  start_tag(handle.get(), 0, buffer, "record", sizeof buffer, 200, &err);
  EXPECT_STREQ(buffer, "<record state=\"200\">\n");
  end_tag(handle.get(), 0, buffer, "record", sizeof buffer, &err);
  EXPECT_STREQ(buffer, "</record>\n");
  EXPECT_EQ(xml_enum_print(handle.get(), 0, buffer, "<A/>tail", sizeof buffer, 4, &err), 4u);
  EXPECT_STREQ(buffer, "<A/>");
  EXPECT_EQ(err, 0u);
}

TEST(XmlWrite, elements_are_whole_or_not_there) {
  const Handle handle;
  const uint32_t value = 7;
  for (int32_t room = -1; room < 10; ++room) {
    std::unique_ptr<char[]> exact(new char[static_cast<size_t>(std::max(room, 0))]);
    uint32_t err = 0;
    EXPECT_EQ(u_int32_to_xml(handle.get(), 0, "n", exact.get(), &value, room, 0, &err), 0u);
    EXPECT_EQ(err, 90u);
  }
}

TEST(XmlWrite, end_tag_is_written_after_an_error_too) {
  const Handle handle;
  char buffer[16];
  uint32_t err = 12;
  EXPECT_EQ(end_tag(handle.get(), 0, buffer, "r", sizeof buffer, &err), 5u);
  EXPECT_EQ(start_tag(handle.get(), 0, buffer, "r", sizeof buffer, 0, &err), 0u);
  EXPECT_EQ(err, 12u);
}

TEST(XmlWrite, timestamp_is_in_utc) {
  const Handle handle;
  char buffer[128];
  uint32_t err = 0;
  const uint32_t length = start_tag_timestamp(handle.get(), 0, buffer, "m", sizeof buffer, &err);
  EXPECT_EQ(length, std::strlen("<m time=\"2026-01-02T03:04:05.678901Z\">\n"));
  EXPECT_EQ(std::string_view(buffer).substr(0, 9), "<m time=\"");
}

TEST(XmlRead, document_types_are_refused) {
  EXPECT_EQ(refusal("<!DOCTYPE a [<!ENTITY x \"y\">]>\n<a>&x;</a>"),
            "line 1: a document type is not accepted");
  EXPECT_EQ(refusal("<?xml version='1.0'?>\n<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a/>"),
            "line 2: a document type is not accepted");
  refusal("<!DOCTYPE a><a/>");
}

TEST(XmlRead, malformed_texts_name_the_line) {
  EXPECT_EQ(refusal("<a>\n<b></a>").substr(0, 7), "line 2:");
  refusal("");
  refusal("<a>&undeclared;</a>");
  refusal(std::string(3000, '<'));
}

TEST(XmlRead, deep_nesting_is_refused_not_followed) {
  std::string deep;
  for (int i = 0; i < 5000; ++i) {
    deep += "<a>";
  }
  refusal(deep);
}

TEST(XmlRead, value_out_of_range_is_an_empty_element) {
  const Xml xml = parse_xml("<s>\n<my_type_e value out of range/></s>");
  uint32_t count = 0;
  EXPECT_EQ(xml_get_element_nodecount(xml.get(), "//s/my_type_e", &count), 0u);
  EXPECT_EQ(count, 1u);
  refusal("<s>< value out of range/></s>");
}

TEST(XmlRead, paths_select_as_x_path_does) {
  const Xml xml = parse_xml("<m><r><n>1</n><n>2</n><c><v>x</v></c></r><r><n>3</n></r></m>");
  const auto count = [&](const char* path) {
    uint32_t nodes = 99;
    EXPECT_EQ(xml_get_element_nodecount(xml.get(), path, &nodes), 0u) << path;
    return nodes;
  };
  const auto value = [&](const char* path) {
    char text[16] = "";
    const uint32_t status = xml_get_element_value(xml.get(), path, text, sizeof text, 0);
    return status == 0 ? std::string(text) : "status " + std::to_string(status);
  };
  EXPECT_EQ(count("//r"), 2u);
  EXPECT_EQ(count("//r/n"), 3u);
  EXPECT_EQ(count("//r/n[1]"), 2u);
  EXPECT_EQ(count("(//r)[1]/n"), 2u);
  EXPECT_EQ(value("(//r)[1]/n[2]"), "2");
  EXPECT_EQ(value("(//r)[2]/n[1]"), "3");
  EXPECT_EQ(value("(//r)[2]/n[2]"), "status 2");
  EXPECT_EQ(value("(//r)[3]/n"), "status 2");
  EXPECT_EQ(value("(//r)[1]/c/v"), "x");
  EXPECT_EQ(value("(//r)[1]/c/w/x"), "status 2");
  EXPECT_EQ(value("(//r)[1]/n[1]"), "1");
  EXPECT_EQ(value("/m/r[2]/n"), "3");
  EXPECT_EQ(value("//r[n='3']/n"), "3");
  EXPECT_EQ(value("//none"), "status 2");
  EXPECT_EQ(value("//["), "status 22");
  EXPECT_EQ(value("1 + 1"), "status 22");
  EXPECT_EQ(value("//namespace::*"), "status 22");
  char cut[3] = "";
  const Xml longer = parse_xml("<a>abcdef</a>");
  EXPECT_EQ(xml_get_element_value(longer.get(), "//a", cut, sizeof cut, 0), 0u);
  EXPECT_STREQ(cut, "ab");
}

TEST(XmlRead, numbers_are_read_whole_or_refused) {
  const Handle handle;
  const Xml xml = parse_xml("<r><a> 255 </a><b>256</b><c>0xFf</c><d>-1</d><e></e><f>1x</f></r>");
  const auto read = [&](const char* path) {
    uint32_t err = 0;
    uint8_t value = 77;
    char reason[64] = "";
    u_int8_from_xml(handle.get(), 0, path, xml.get(), &value, &err, reason, sizeof reason);
    if (err == 22) {
      EXPECT_EQ(std::string(reason), std::string("Failed xpath: ") + path);
    }
    return err != 0 ? "error " + std::to_string(err) : std::to_string(value);
  };
  EXPECT_EQ(read("//r/a"), "255");
  EXPECT_EQ(read("//r/b"), "error 22");
  EXPECT_EQ(read("//r/c"), "255");
  EXPECT_EQ(read("//r/d"), "error 22");
  EXPECT_EQ(read("//r/e"), "error 22");
  EXPECT_EQ(read("//r/f"), "error 22");
  EXPECT_EQ(read("//r/g"), "error 2");
  uint32_t err = 0;
  uint8_t value = 0;
  u_int8_from_xml(handle.get(), 0, "//r/b", xml.get(), &value, &err, nullptr, 0);
  EXPECT_EQ(err, 22u);
}

TEST(XmlRead, addresses_and_booleans_round_trip) {
  const Handle handle;
  for (const char* text : {"10.1.2.3/24", "2001:db8::1/64", "none", "0.0.0.0/0"}) {
    const Xml xml = parse_xml("<r><a>" + std::string(text) + "</a></r>");
    uint32_t err = 0;
    ork_ip_address address{};
    ip_address_from_xml(handle.get(), 0, "//r/a", xml.get(), &address, &err, nullptr, 0);
    char buffer[128];
    ip_address_to_xml(handle.get(), 0, "a", buffer, &address, sizeof buffer, 0, &err);
    EXPECT_EQ(std::string(buffer), "<a>" + std::string(text) + "</a>\n");
  }
  for (const char* text : {"10.1.2/24", "10.1.2.3/33", "::1/129", "10.1.2.3/", "x"}) {
    const Xml xml = parse_xml("<r><a>" + std::string(text) + "</a></r>");
    uint32_t err = 0;
    ork_ip_address address{};
    ip_address_from_xml(handle.get(), 0, "//r/a", xml.get(), &address, &err, nullptr, 0);
    EXPECT_EQ(err, 22u) << text;
  }
  const Xml xml = parse_xml("<r><a>true</a><b>0</b><c>2</c></r>");
  uint32_t err = 0;
  ork_boolean value = 0;
  ork_boolean_from_xml(handle.get(), 0, "//r/a", xml.get(), &value, &err, nullptr, 0);
  EXPECT_EQ(value, 1u);
  ork_boolean_from_xml(handle.get(), 0, "//r/b", xml.get(), &value, &err, nullptr, 0);
  EXPECT_EQ(value, 0u);
  EXPECT_EQ(err, 0u);
  ork_boolean_from_xml(handle.get(), 0, "//r/c", xml.get(), &value, &err, nullptr, 0);
  EXPECT_EQ(err, 22u);
}

using Image = std::array<uint8_t, 18>;

ork_ip_address address_of(const Handle& handle, const Image& image) {
  ork_ip_address address{};
  uint32_t err = 0;
  ip_address_unmarshal(handle.get(), 0, image.data(), &address, int32_t{sizeof image}, 0, &err);
  EXPECT_EQ(err, 0u);
  return address;
}

std::string printed(const Handle& handle, const ork_ip_address& address) {
  char line[128];
  uint32_t err = 0;
  const uint32_t length =
      ip_address_print(handle.get(), 0, line, 0, "a", &address, sizeof line, &err);
  EXPECT_EQ(err, 0u);
  return {line + std::strlen("a: "), length - std::strlen("a: \n")};
}

// What an element with the text is as an image; all ones for a text that is refused.
Image image_of(const Handle& handle, const std::string& text) {
  const Xml xml = parse_xml("<r><a>" + text + "</a></r>");
  ork_ip_address address{};
  std::memset(address.address, 0xEE, sizeof address.address);
  uint32_t err = 0;
  ip_address_from_xml(handle.get(), 0, "//r/a", xml.get(), &address, &err, nullptr, 0);
  Image image;
  image.fill(0xFF);
  if (err == 0) {
    ip_address_marshal(handle.get(), 0, image.data(), &address, int32_t{sizeof image}, &err);
  }
  return image;
}

TEST(XmlAddress, every_image_reads_back_from_text_and_xml) {
  const Handle handle;
  const auto expect_back = [&](const Image& image) {
    const ork_ip_address address = address_of(handle, image);
    const std::string text = printed(handle, address);
    char element[128];
    uint32_t err = 0;
    ip_address_to_xml(handle.get(), 0, "a", element, &address, sizeof element, 0, &err);
    EXPECT_EQ(element, "<a>" + text + "</a>\n");
    EXPECT_EQ(image_of(handle, text), image) << text;
  };
  for (const uint8_t family : std::vector<uint8_t>{0, 1, 4, 5, 6, 9, 255}) {
    for (const uint8_t prefix : std::vector<uint8_t>{0, 1, 24, 32, 33, 128, 129, 255}) {
      expect_back({family, prefix});
      for (size_t place = 2; place < Image().size(); ++place) {
        Image image{family, prefix};
        image[place] = 0xA5;
        expect_back(image);
        image[2] = 10;
        image[17] = 1;
        expect_back(image);
      }
    }
  }
}

TEST(XmlAddress, ordinary_addresses_keep_their_form) {
  const Handle handle;
  const std::pair<Image, const char*> told[] = {
      {{}, "none"},
      {{4, 24, 10, 0, 0, 1}, "10.0.0.1/24"},
      {{4, 0}, "0.0.0.0/0"},
      {{6, 64, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, "2001:db8::1/64"},
      {{6, 128, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 1, 2, 3, 4}, "::ffff:1.2.3.4/128"}};
  for (const auto& [image, text] : told) {
    EXPECT_EQ(printed(handle, address_of(handle, image)), text);
  }
}

TEST(XmlAddress, image_that_the_ordinary_form_does_not_tell_is_written_out) {
  const Handle handle;
  const std::pair<Image, const char*> told[] = {
      {{9, 24, 10}, "family 9/24 0a000000000000000000000000000000"},
      {{0, 1}, "family 0/1 00000000000000000000000000000000"},
      {{4, 33, 10}, "family 4/33 0a000000000000000000000000000000"},
      {{4, 24, 10, 0, 0, 1, 7}, "family 4/24 0a000001070000000000000000000000"},
      {{6, 129}, "family 6/129 00000000000000000000000000000000"}};
  for (const auto& [image, text] : told) {
    EXPECT_EQ(printed(handle, address_of(handle, image)), text);
  }
}

TEST(XmlAddress, empty_element_is_no_address) {
  const Handle handle;
  EXPECT_EQ(image_of(handle, ""), Image{});
  EXPECT_EQ(image_of(handle, " \n"), Image{});
}

TEST(XmlAddress, damaged_image_is_refused) {
  const Handle handle;
  Image refused;
  refused.fill(0xFF);
  const std::string digits = "0a000000000000000000000000000000";
  EXPECT_NE(image_of(handle, "family 9/24 " + digits), refused);
  for (const std::string& text : std::vector<std::string>{
           "family 256/24 " + digits, "family 9/256 " + digits, "family 9 " + digits,
           "family /24 " + digits, "family 9/24", "family 9/24 " + digits + "0",
           "family 9/24 " + digits.substr(1), "family 9/24 x" + digits.substr(1),
           "family 9/24  " + digits, "family -1/24 " + digits, "unknown family 9"}) {
    EXPECT_EQ(image_of(handle, text), refused) << text;
  }
}

// The variant on the wire is passed over, so an object holds the value alone.
TEST(XmlLinkType, every_image_reads_back_from_xml) {
  const Handle handle;
  for (const uint8_t variant : std::vector<uint8_t>{0, 1, 127, 128, 255}) {
    for (const uint8_t byte : std::vector<uint8_t>{0, 1, 0x7F, 0xFF}) {
      const uint8_t wire[5] = {variant, byte, 0, 7, byte};
      ork_link_type object{};
      uint32_t err = 0;
      link_type_unmarshal(handle.get(), 0, wire, &object, sizeof wire, 0, &err);
      char element[64];
      link_type_to_xml(handle.get(), 0, "l", element, &object, sizeof element, 0, &err);
      const Xml xml = parse_xml(element);
      ork_link_type back{};
      link_type_from_xml(handle.get(), 0, "//l", xml.get(), &back, &err, nullptr, 0);
      uint8_t images[2][5];
      link_type_marshal(handle.get(), 0, images[0], &object, sizeof images[0], &err);
      link_type_marshal(handle.get(), 0, images[1], &back, sizeof images[1], &err);
      EXPECT_EQ(err, 0u);
      EXPECT_EQ(std::memcmp(images[0], images[1], sizeof images[0]), 0) << element;
    }
  }
}

std::string through_xml(const Handle& handle, const std::string& bytes) {
  char buffer[8192];
  uint32_t err = 0;
  null_string_to_xml(handle.get(), 0, "s", buffer, bytes.data(), sizeof buffer,
                     static_cast<uint32_t>(bytes.size()), 2, &err);
  const Xml xml = parse_xml("<r>" + std::string(buffer) + "</r>");
  std::string back(bytes.size(), '?');
  null_string_from_xml(handle.get(), 0, "//r/s", xml.get(), back.data(),
                       static_cast<uint32_t>(back.size()), &err, nullptr, 0);
  EXPECT_EQ(err, 0u);
  return back;
}

TEST(XmlText, every_byte_and_every_pair_round_trips) {
  const Handle handle;
  for (int a = 1; a < 256; ++a) {
    for (const int b :
         {1, 0x20, 0x5c, 0x78, 0x3c, 0x5d, 0x7f, 0x80, 0xa9, 0xbf, 0xc3, 0xed, 0xf4, 0xff}) {
      const std::string bytes = {static_cast<char>(a), static_cast<char>(b), ' '};
      EXPECT_EQ(through_xml(handle, bytes), bytes) << a << " " << b;
    }
  }
}

TEST(XmlText, hard_ones_round_trip) {
  const Handle handle;
  for (const std::string& bytes :
       {std::string("]]>&amp;\"'"), std::string("\xef\xbf\xbe"), std::string("\xed\xa0\x80"),
        std::string("\xf4\x90\x80\x80"), std::string("\xf0\x9f\x98\x80"), std::string("\xc0\xaf"),
        std::string("\\x41"), std::string(" lead and tail\t\r\n"),
        std::string("<a value out of range/>")}) {
    EXPECT_EQ(through_xml(handle, bytes), bytes);
  }
  EXPECT_EQ(through_xml(handle, std::string("ab\0cd", 5)), std::string("ab\0\0\0", 5))
      << "what is behind the end stays";
}

TEST(XmlText, too_long_and_bad_escapes_are_refused) {
  const Handle handle;
  const Xml xml = parse_xml("<r><a>abcd</a><b>\\q</b><c>\\x4</c></r>");
  char target[4] = {'k', 'e', 'e', 'p'};
  const auto read = [&](const char* path, uint32_t size) {
    uint32_t err = 0;
    null_string_from_xml(handle.get(), 0, path, xml.get(), target, size, &err, nullptr, 0);
    return err;
  };
  EXPECT_EQ(read("//r/a", 3), 28u);
  EXPECT_EQ(read("//r/b", 4), 22u);
  EXPECT_EQ(read("//r/c", 4), 22u);
  EXPECT_EQ(std::string_view(target, 4), "keep");
  EXPECT_EQ(read("//r/a", 4), 0u);
  EXPECT_EQ(std::string_view(target, 4), "abcd");
}

// Each element as depth, name, parent, line, namespace, text, and an attribute if there is a
// foreign one.
std::string elements_of(const std::string& text) {
  std::string seen;
  const auto append = [](void* ctx, const ork_xml_element* element) -> uint32_t {
    const auto shown = [](const char* part) {
      return std::string(part != nullptr ? part : "-") + ",";
    };
    *static_cast<std::string*>(ctx) +=
        std::to_string(element->depth) + "," + shown(element->name) + shown(element->parent) +
        std::to_string(element->line) + "," + shown(element->space) + shown(element->text) +
        (element->attribute != nullptr ? element->attribute : "") + " ";
    return 0;
  };
  EXPECT_EQ(ork_xml_each(parse_xml(text).get(), append, &seen), 0u);
  return seen;
}

TEST(XmlTools, elements_are_told_in_document_order) {
  EXPECT_EQ(elements_of("<m>\n<r>\n<n>1</n>\n</r>\n<o/></m>"),
            "0,m,-,1,-,-, 1,r,m,2,-,-, 2,n,r,3,-,1, 1,o,m,5,-,-, ");
}

TEST(XmlTools, elements_in_a_namespace_say_so) {
  EXPECT_EQ(elements_of("<m><a xmlns='urn:a'/><p:b xmlns:p='urn:b'/></m>"),
            "0,m,-,1,-,-, 1,a,m,1,urn:a,-, 1,b,m,1,urn:b,-, ");
}

TEST(XmlTools, text_of_an_element_is_the_first_that_is_not_blank) {
  EXPECT_EQ(elements_of("<m> <a>x</a> <!-- no -->y <a/>z</m>"),
            "0,m,-,1,-,y , 1,a,m,1,-,x, 1,a,m,1,-,-, ");
}

TEST(XmlTools, attribute_that_no_writer_writes_is_told) {
  EXPECT_EQ(elements_of("<m time='t'><a state='2'/><b state='2' x='1' y='2'/></m>"),
            "0,m,-,1,-,-, 1,a,m,1,-,-, 1,b,m,1,-,-,x ");
}

TEST(XmlTools, paths_lines_and_recordings) {
  const Xml xml = parse_xml("<m>\n<r>\n<n>1</n>\n</r>\n</m>");
  char path[32];
  EXPECT_EQ(ork_xml_nth_path(path, sizeof path, "r", 1), 0u);
  EXPECT_STREQ(path, "(//r)[1]");
  EXPECT_EQ(ork_xml_nth_path(path, 4, "r", 1), 90u);
  EXPECT_EQ(ork_xml_line(xml.get(), "(//r)[1]/n"), 3u);
  EXPECT_EQ(ork_xml_line(xml.get(), "//none"), 0u);
  const std::string two = "<m time=\"t\">\n<a/></m>\n<m/>";
  EXPECT_EQ(ork_xml_document_length(two.data(), two.size()),
            std::strlen("<m time=\"t\">\n<a/></m>\n"));
  EXPECT_EQ(ork_xml_document_length("<m>", 3), 0u);
  EXPECT_EQ(ork_xml_document_length("", 0), 0u);
}

// Each element as name and line. Every line is asked for by path too, which finds the first of a
// name.
std::string lines_of(const std::string& text) {
  struct Seen {
    Xml xml;
    std::string lines;
  } seen{parse_xml(text), ""};
  const auto append = [](void* ctx, const ork_xml_element* element) -> uint32_t {
    auto& [xml, lines] = *static_cast<Seen*>(ctx);
    EXPECT_EQ(ork_xml_line(xml.get(), ("//" + std::string(element->name)).c_str()), element->line);
    lines += std::string(element->name) + " " + std::to_string(element->line) + ", ";
    return 0;
  };
  EXPECT_EQ(ork_xml_each(seen.xml.get(), append, &seen), 0u);
  return seen.lines;
}

TEST(XmlTools, lines_beyond_65535_are_true) {
  const auto behind = [](const std::string& inside) {
    return lines_of("<m>" + std::string(70'000, '\n') + inside + "</m>");
  };
  EXPECT_EQ(behind("<r><hop_idd/></r>"), "m 1, r 70001, hop_idd 70001, ");
  EXPECT_EQ(behind("<r><is_none foo=\"1\"/></r>"), "m 1, r 70001, is_none 70001, ");
  EXPECT_EQ(behind("<r>\n\n\n<n/></r>"), "m 1, r 70001, n 70004, ");
  EXPECT_EQ(behind("<hop_idd>\n<x/>\n</hop_idd>\n<y/>"), "m 1, hop_idd 70001, x 70002, y 70004, ");
  EXPECT_EQ(behind("\n\n<dscp>\n256</dscp>"), "m 1, dscp 70003, ");
  EXPECT_EQ(refusal("<m>" + std::string(70'000, '\n') + "</r>").substr(0, 11), "line 70001:");
}

TEST(XmlTools, start_tag_of_several_lines_is_told_by_its_first) {
  EXPECT_EQ(lines_of("<!-- <\n --><m\n state='2'\n time='\n&lt;>'\r\n>\n<n\n/></m>"), "m 2, n 7, ");
  const std::string long_tag = "<n\n state='" + std::string(60'000, ' ') + "\n'/>";
  EXPECT_EQ(lines_of("<m>\n" + long_tag + "<o/></m>"), "m 1, n 2, o 4, ");
}

TEST(XmlTools, line_of_what_is_no_element_is_that_of_the_element_around_it) {
  const Xml xml = parse_xml("<m>\n<n\n state='2'>\n\ntext<!-- --></n></m>");
  for (const char* path : {"//n/@state", "//n/text()", "//n/comment()"}) {
    EXPECT_EQ(ork_xml_line(xml.get(), path), 2u) << path;
  }
  EXPECT_EQ(ork_xml_line(xml.get(), "/"), 0u);
}

}  // namespace
}  // namespace platform_test
