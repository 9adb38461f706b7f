// What a user of the grown library sees of a field and a record that the tables gained. Prints
// "grown", or what is missing.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "ork/platform.h"

namespace {

void check(bool holds, const char* what) {
  if (holds) return;
  std::printf("not so: %s\n", what);
  std::exit(1);
}

struct Handle {
  ork_handle* it;
  uint32_t err = 0;
  Handle() {
    ork_options options;
    ork_options_init(&options);
    it = ork_handle_create(&options, &err);
    check(it != nullptr, "a handle");
  }
  ~Handle() {
    ork_memory_report left;
    ork_handle_destroy(it, &left);
    check(left.live_blocks == 0, "everything given back");
  }
};

void field(Handle& h) {
  auto* sent = fwe_cl_wayfind_hop_chan_data_create(h.it, 1);
  fwe_cl_wayfind_hop_chan_data_moves_set_value(h.it, 1, sent, 0xA1B2C3D4, &h.err);
  uint8_t image[1024];
  const uint32_t n =
      fwe_cl_wayfind_hop_chan_data_marshal(h.it, 1, image, sent, sizeof image, &h.err);
  check(h.err == 0 && image[0] == 2, "the image says the new variant");
  check(std::memcmp(image + n - 4, "\xA1\xB2\xC3\xD4", 4) == 0, "the new field ends the image");

  auto* received = fwe_cl_wayfind_hop_chan_data_create(h.it, 1);
  check(fwe_cl_wayfind_hop_chan_data_unmarshal(h.it, 1, image, received, static_cast<int32_t>(n), 0,
                                               &h.err) == n,
        "the image is read");
  check(fwe_cl_wayfind_hop_chan_data_moves_get_value(h.it, 1, received, &h.err) == 0xA1B2C3D4,
        "the value arrives");

  static char text[65536];
  fwe_cl_wayfind_hop_chan_data_print(h.it, 1, text, 0, "hop", received, sizeof text, &h.err);
  check(std::strstr(text, "moves") != nullptr && std::strstr(text, "2712847316") != nullptr,
        "the text shows it");
  std::memset(text, 0, sizeof text);
  fwe_cl_wayfind_hop_chan_data_to_xml(h.it, 1, "hop", text, received, sizeof text, 0, &h.err);
  check(std::strstr(text, "<moves>") != nullptr, "the document holds it");
  check(h.err == 0, "no error");
  fwe_cl_wayfind_hop_chan_data_destroy(h.it, 1, sent);
  fwe_cl_wayfind_hop_chan_data_destroy(h.it, 1, received);
}

void record(Handle& h) {
  auto* sent = fwe_cl_wayfind_grown_st_create(h.it, 1);
  check(fwe_cl_wayfind_grown_st_sizeof(h.it) == 104, "the size follows");
  fwe_cl_wayfind_grown_st_width_set_value(h.it, 1, sent, 0x1234, &h.err);
  fwe_cl_wayfind_grown_st_label_set(h.it, 1, sent, "oak", 3, &h.err);
  fwe_cl_wayfind_grown_st_rings_set_value(h.it, 1, sent, 1, 7, &h.err);
  fwe_cl_wayfind_mem_st_fwe_num_set_value(
      h.it, 1, fwe_cl_wayfind_grown_st_mem_get(h.it, 1, sent, &h.err), 9, &h.err);
  fwe_cl_wayfind_grown_st_evergreen_set_value(h.it, 1, sent, 1, &h.err);
  check(h.err == 0, "all fields take a value");

  // 6 fixed, 2, 12, count 4, two rings 8, the image inside 26, 1.
  uint8_t image[256];
  const uint32_t n = fwe_cl_wayfind_grown_st_marshal(h.it, 1, image, sent, sizeof image, &h.err);
  check(n == 59 && n == fwe_cl_wayfind_grown_st_len(h.it, 1, sent), "the image has its length");
  check(std::memcmp(image, "\x01\x00\x00\x00\x00\x39\x12\x34oak", 11) == 0,
        "the image begins as told");

  auto* received = fwe_cl_wayfind_grown_st_create(h.it, 1);
  check(fwe_cl_wayfind_grown_st_unmarshal(h.it, 1, image, received, static_cast<int32_t>(n), 0,
                                          &h.err) == n,
        "the image is read");
  check(fwe_cl_wayfind_grown_st_compare(sent, received) == 0, "the copy compares equal");

  static char text[8192];
  fwe_cl_wayfind_grown_st_print(h.it, 1, text, 0, "tree", received, sizeof text, &h.err);
  check(std::strstr(text, "tree@fwe_cl_wayfind_grown_st: {") == text, "the text has its head");
  check(std::strstr(text, "evergreen") != nullptr, "the text shows the later value");

  static char xml[8192];
  fwe_cl_wayfind_grown_st_to_xml(h.it, 1, "tree", xml, received, sizeof xml, 0, &h.err);
  check(h.err == 0, "no error");
  ork_xml* document = ork_xml_parse(xml, std::strlen(xml), &h.err, nullptr, 0);
  check(document != nullptr, "the document parses");
  auto* read = fwe_cl_wayfind_grown_st_create(h.it, 1);
  fwe_cl_wayfind_grown_st_from_xml(h.it, 1, "/tree", document, read, &h.err, nullptr, 0);
  check(h.err == 0 && fwe_cl_wayfind_grown_st_compare(sent, read) == 0,
        "the document is read back");
  ork_xml_free(document);

  fwe_cl_wayfind_grown_st_destroy(h.it, 1, sent);
  fwe_cl_wayfind_grown_st_destroy(h.it, 1, received);
  fwe_cl_wayfind_grown_st_destroy(h.it, 1, read);
}

}  // namespace

int main() {
  {
    Handle h;
    field(h);
    record(h);
  }
  std::puts("grown");
}
