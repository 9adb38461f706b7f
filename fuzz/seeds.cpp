// Writes inputs to begin from: every record's image with and without state bytes, every message's
// frame, every record's document, a few orders of bundle frames, and a library as the offline tools
// read it. One folder per target.
//
//   seeds FOLDER
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/small_library.h"
#include "fuzz/world.h"
#include "tests/support/exports.h"
#include "tools/offline/manifest_digest.h"
#include "tools/offline/trace_texts.h"

namespace {

std::filesystem::path root;

void write(const std::string& target, const std::string& name, const std::string& bytes) {
  std::filesystem::create_directories(root / target);
  std::ofstream(root / target / name, std::ios::binary) << bytes;
}

std::string head(std::initializer_list<int> bytes) {
  std::string text;
  for (const int byte : bytes) text += static_cast<char>(byte);
  return text;
}

template <class Prototype>
Prototype get(const wayfind_function* functions, const std::string& suffix) {
  return kit::function<Prototype>(functions, suffix);
}

void record_seeds(unsigned number, uint8_t bits) {
  using Marshal = uint32_t (*)(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);
  using ToXml =
      uint32_t (*)(ork_handle*, uint32_t, const char*, char*, void*, uint32_t, uint8_t, uint32_t*);
  const wayfind_record& type = wayfind_records[number];
  const std::string name = std::string(type.name) + (bits == 0 ? "" : "_tracked");
  fuzz::World world(bits, 0);
  void* object = sample::create(world.handle(), type);
  sample::fill(world.handle(), type, object, 2);
  std::string image(1 << 16, '\0');
  image.resize(get<Marshal>(type.functions, "_marshal")(
      world.handle(), fuzz::instance, reinterpret_cast<uint8_t*>(image.data()), object,
      static_cast<int32_t>(image.size()), &world.err));
  write("record", name, head({static_cast<int>(number), bits, 0, 0}) + image);
  write("record", name + "_reused", head({static_cast<int>(number), bits, 0, 3}) + image);
  std::string document(1 << 16, '\0');
  document.resize(get<ToXml>(type.functions, "_to_xml")(
      world.handle(), fuzz::instance, "record", document.data(), object,
      static_cast<uint32_t>(document.size()), 0, &world.err));
  write("xml", name, head({static_cast<int>(number), bits, 0}) + document);
  sample::destroy(world.handle(), type, object);
}

std::string message_frame(fuzz::World& world, const wayfind_message& message) {
  using Create = void* (*)(ork_handle*, uint32_t);
  using Get = void* (*)(ork_handle*, uint32_t, void*, uint32_t*);
  using Marshal = uint32_t (*)(ork_handle*, uint32_t, uint8_t*, void*, int32_t, uint32_t*);
  void* object = get<Create>(message.functions, "_create")(world.handle(), fuzz::instance);
  for (unsigned r = 0; r < message.record_count; ++r) {
    const wayfind_record& type = *message.records[r];
    void* record = get<Get>(message.functions, std::string("_") + type.name + "_get")(
        world.handle(), fuzz::instance, object, &world.err);
    sample::fill(world.handle(), type, record, 2);
  }
  std::string frame(1 << 16, '\0');
  frame.resize(get<Marshal>(message.functions, "_marshal")(
      world.handle(), fuzz::instance, reinterpret_cast<uint8_t*>(frame.data()), object,
      static_cast<int32_t>(frame.size()), &world.err));
  get<ork_message_destroy_fn>(message.functions, "_destroy")(world.handle(), fuzz::instance,
                                                             object);
  return frame;
}

// Frames as the bundle target makes them: start, abort, commit, message.
void bundle_seeds() {
  for (int bundle = 0; bundle < static_cast<int>(wayfind_bundle_count); ++bundle) {
    const std::string start = head({0, bundle, 0, 0});
    const std::string commit = head({2, bundle, 0, 0});
    const std::string members =
        head({3, bundle, 0, 0, 3, bundle + 5, 0, 0, 4, 24, 0, 0, 4, 23, 0, 0});
    const std::string name = std::to_string(bundle);
    write("bundle", "whole_" + name, head({0, 0}) + start + members + commit);
    write("bundle", "aborted_" + name,
          head({2, 0}) + start + members + head({1, bundle, 0, 0}) + commit);
    write("bundle", "damaged_" + name,
          head({2, 0}) + start + head({3, 23, 60, 255, 3, 12, 0xF0, 9}) + start + commit);
    write("bundle", "starved_" + name, head({4, 3}) + start + members + commit + start);
  }
}

// Damage shows how the readers stand it only where they take the whole file to its end.
void library_seed() {
  const std::string file = fuzz::small_library();
  const wayfind::LibraryFile library({file.begin(), file.end()}, "small library");
  const wayfind::Manifest manifest = wayfind::read_manifest(library);
  const wayfind::TraceTexts texts(library);
  if (library.build_id() != "01234567" || manifest.definitions.size() != 1 ||
      manifest.definitions[0].name != "small_type" || manifest.build.empty() ||
      texts.all().size() != 2 || texts.all()[1].text != " %d %u") {
    std::abort();
  }
  write("trace_decode", "library", file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  root = argv[1];
  for (const uint8_t bits : {uint8_t{0}, uint8_t{2}}) {
    for (unsigned r = 0; r < wayfind_record_count; ++r) record_seeds(r, bits);
    for (unsigned m = 0; m < wayfind_message_count; ++m) {
      fuzz::World world(bits, 0);
      const std::string name =
          std::string(wayfind_messages[m].name) + (bits == 0 ? "" : "_tracked");
      write("dispatch", name, head({bits, 0}) + message_frame(world, wayfind_messages[m]));
    }
  }
  bundle_seeds();
  library_seed();
}
