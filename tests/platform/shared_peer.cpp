// The other process of the tests of shared storage: what it finds goes to the standard output, one
// line each.
//
//   read NAME TRACKING ADDRESS...   reads and destroys an object of every record, in schema order
//   leave NAME                      makes an object and ends without destroying it
//   work NAME ROUNDS                makes and destroys objects of every record
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "shared_reader.h"

namespace {

using shared_test::Process;

int read_all(Process& process, char** addresses) {
  std::printf("library %p\n", reinterpret_cast<void*>(wayfind_records[0].functions[0].address));
  for (unsigned i = 0; i < wayfind_record_count; ++i) {
    const encoders::Calls& calls = encoders::all_records()[i];
    void* object = reinterpret_cast<void*>(std::strtoull(addresses[i], nullptr, 16));
    shared_test::Reader reader(process.handle, 2);
    reader.read(*calls.schema, object, calls.name());
    for (const std::string& path : reader.strange) {
      std::printf("strange %s\n", path.c_str());
    }
    const std::string wire =
        shared_test::hexadecimal(encoders::marshalled(process.handle, calls, object));
    process.destroyed.clear();
    calls.destroy(process.handle, kit::instance, object);
    const bool told = process.destroyed == std::vector<const void*>{object};
    std::printf("%s %" PRIu32 " %s %s\n", calls.name(), reader.fields, wire.c_str(),
                told ? "told" : "not told");
  }
  return 0;
}

int leave(Process& process) {
  const encoders::Calls& calls = encoders::calls_of("fwe_cl_wayfind_hop_chan_data");
  void* object = calls.create(process.handle, kit::instance);
  encoders::Filler(process.handle, 2).fill(*calls.schema, object, calls.name());
  std::printf("%p\n", object);
  std::fflush(stdout);
  _exit(0);
}

int work(Process& process, long rounds) {
  for (long round = 0; round < rounds; ++round) {
    for (const encoders::Calls& calls : encoders::all_records()) {
      const encoders::Object object = encoders::filled(process.handle, calls, 2);
      shared_test::Reader reader(process.handle, 2);
      reader.read(*calls.schema, object.get(), calls.name());
      for (const std::string& path : reader.strange) {
        std::printf("strange %s\n", path.c_str());
      }
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    return 2;
  }
  const std::string_view task = argv[1];
  const bool tracking = task != "read" || (argc > 3 && std::string_view(argv[3]) == "on");
  Process process(argv[2], 0, tracking ? ORK_TRACKING_ON : ORK_TRACKING_OFF);
  if (process.err != 0) {
    std::printf("error %" PRIu32 "\n", process.err);
    return 1;
  }
  if (task == "read" && argc == 4 + static_cast<int>(wayfind_record_count)) {
    return read_all(process, argv + 4);
  }
  if (task == "leave") {
    return leave(process);
  }
  return task == "work" && argc == 4 ? work(process, std::strtol(argv[3], nullptr, 10)) : 2;
}
