// Storage that two processes share, with the real library in both.
#include <sys/mman.h>
#include <sys/personality.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <sstream>

#include "platform/shared/segment.h"
#include "shared_reader.h"

namespace shared_test {
namespace {

constexpr size_t room = size_t{8} << 20;

class Shared : public testing::Test {
 protected:
  Shared() : name_("wayfind_shared_test." + std::to_string(getpid())) { remove(); }
  ~Shared() override { remove(); }

  const char* name() const { return name_.c_str(); }
  void remove() const {
    uint32_t err = 0;
    ork_storage_remove(name(), &err);
  }
  uint32_t error_of(const char* name, size_t size, void* address = nullptr) const {
    uint32_t err = 0;
    ork_storage_destroy(ork_storage_open(name, size, address, &err));
    return err;
  }

 private:
  std::string name_;
};

// Starts the other process, which prints to the stream.
FILE* start(const std::string& arguments) {
  return popen((std::string("exec ") + SHARED_PEER + " " + arguments).c_str(), "r");
}

std::vector<std::string> finish(FILE* stream) {
  std::string text;
  char part[4096];
  while (const size_t n = std::fread(part, 1, sizeof part, stream)) {
    text.append(part, n);
  }
  EXPECT_EQ(pclose(stream), 0) << text;
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

// Created and destroyed, by type.
std::map<std::string, std::pair<uint64_t, uint64_t>> statistics(const ork_storage* storage) {
  std::map<std::string, std::pair<uint64_t, uint64_t>> counts;
  ork_statistics_each(
      storage,
      [](void* ctx, const char* type, uint32_t, uint64_t created, uint64_t destroyed) {
        auto& count = (*static_cast<decltype(counts)*>(ctx))[type];
        count.first += created;
        count.second += destroyed;
      },
      &counts);
  return counts;
}

// All processes count in the shared descriptors. Enums are left out: a parent's destroy does not
// visit them.
void expect_records_balance(const ork_storage* storage) {
  const auto counts = statistics(storage);
  for (unsigned i = 0; i < wayfind_record_count; ++i) {
    const auto& count = counts.at(wayfind_records[i].name);
    EXPECT_GT(count.first, 0u) << wayfind_records[i].name;
    EXPECT_EQ(count.second, count.first) << wayfind_records[i].name;
  }
}

class SharedTracking : public Shared, public testing::WithParamInterface<ork_tracking> {};

TEST_P(SharedTracking, objects_of_every_record_are_read_and_destroyed_by_another_process) {
  Process process(name(), room, GetParam());
  ASSERT_EQ(process.err, 0u);
  std::string arguments =
      std::string("read ") + name() + (GetParam() == ORK_TRACKING_ON ? " on" : " off");
  std::vector<std::string> wires;
  for (const encoders::Calls& calls : encoders::all_records()) {
    process.contained.clear();
    process.dirty.clear();
    void* object = calls.create(process.handle, kit::instance);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(process.contained, (decltype(process.contained){{object, nullptr}})) << calls.name();
    EXPECT_EQ(process.dirty, std::vector<const void*>{object}) << calls.name();
    encoders::Filler filler(process.handle, 2);
    filler.fill(*calls.schema, object, calls.name());
    EXPECT_EQ(filler.err, 0u);
    wires.push_back(hexadecimal(encoders::marshalled(process.handle, calls, object)));
    std::ostringstream address;
    address << " " << object;
    arguments += address.str();
  }
  const auto lines = finish(start(arguments));
  ASSERT_EQ(lines.size(), 1 + wires.size());
  std::ostringstream own;
  own << "library " << reinterpret_cast<void*>(wayfind_records[0].functions[0].address);
  if ((personality(0xFFFFFFFF) & ADDR_NO_RANDOMIZE) == 0) {
    EXPECT_NE(lines[0], own.str()) << "the library should lie elsewhere in the other process";
  }
  for (size_t i = 0; i < wires.size(); ++i) {
    std::istringstream line(lines[1 + i]);
    std::string record, told;
    unsigned fields = 0;
    std::string wire;
    line >> record >> fields >> wire;
    std::getline(line, told);
    EXPECT_EQ(record, wayfind_records[i].name) << lines[1 + i];
    EXPECT_GE(fields, wayfind_records[i].field_count);
    EXPECT_EQ(wire, wires[i]) << record;
    EXPECT_EQ(told, " told") << record;
  }
  const ork_memory_report memory = process.memory();
  EXPECT_EQ(memory.live_blocks, 0u);
  EXPECT_EQ(memory.live_bytes, 0u);
  EXPECT_EQ(memory.live_distances, 0u);
  expect_records_balance(process.storage);
}

INSTANTIATE_TEST_SUITE_P(Modes, SharedTracking, testing::Values(ORK_TRACKING_OFF, ORK_TRACKING_ON),
                         [](const auto& mode) {
                           return mode.param == ORK_TRACKING_ON ? "tracked" : "untracked";
                         });

TEST_F(Shared, object_outlives_its_process) {
  Process process(name(), room, ORK_TRACKING_ON);
  const auto lines = finish(start(std::string("leave ") + name()));
  ASSERT_EQ(lines.size(), 1u);
  void* object = reinterpret_cast<void*>(std::strtoull(lines[0].c_str(), nullptr, 16));
  const encoders::Calls& calls = encoders::calls_of("fwe_cl_wayfind_hop_chan_data");
  Reader reader(process.handle, 2);
  reader.read(*calls.schema, object, calls.name());
  EXPECT_EQ(reader.strange, std::vector<std::string>{});
  calls.destroy(process.handle, kit::instance, object);
  EXPECT_EQ(process.memory().live_blocks, 0u);
}

TEST_F(Shared, processes_fill_and_work_in_one_storage_at_the_same_time) {
  Process process(name(), room, ORK_TRACKING_ON);
  FILE* first = start(std::string("work ") + name() + " 20");
  FILE* second = start(std::string("work ") + name() + " 20");
  EXPECT_EQ(finish(first), std::vector<std::string>{});
  EXPECT_EQ(finish(second), std::vector<std::string>{});
  EXPECT_EQ(process.memory().live_blocks, 0u);
  EXPECT_EQ(process.memory().live_distances, 0u);
  expect_records_balance(process.storage);
}

TEST_F(Shared, hooks_want_recording_and_an_instance) {
  const encoders::Calls& calls = encoders::calls_of("fwe_cl_wayfind_mem_st");
  {
    Process silent(name(), room, ORK_TRACKING_OFF, 0);
    calls.destroy(silent.handle, kit::instance, calls.create(silent.handle, kit::instance));
    EXPECT_TRUE(silent.contained.empty() && silent.dirty.empty() && silent.destroyed.empty());
  }
  Process process(name(), 0, ORK_TRACKING_OFF);
  calls.destroy(process.handle, ORK_NO_INSTANCE, calls.create(process.handle, ORK_NO_INSTANCE));
  EXPECT_EQ(process.contained.size(), 1u);
  EXPECT_TRUE(process.dirty.empty() && process.destroyed.empty());
}

TEST_F(Shared, descriptors_and_their_variants_lie_in_the_storage) {
  Process process(name(), room, ORK_TRACKING_OFF);
  const encoders::Object object(process.handle, encoders::calls_of("fwe_cl_wayfind_chan_st"));
  const auto* type = ork_get_manifested_type_info(object.get());
  const auto distance = [&](const void* address) {
    return static_cast<size_t>(
        std::abs(static_cast<const char*>(address) - static_cast<char*>(object.get())));
  };
  EXPECT_LT(distance(type), room);
  EXPECT_LT(distance(type->varinfo), room);
  EXPECT_LT(distance(type->varinfo->entries), room);
  EXPECT_EQ(type->shared, 1u);
  EXPECT_EQ(type->varinfo->entries[3].create_count, 1u);
}

TEST_F(Shared, address_that_is_taken_is_refused) {
  void* taken = mmap(nullptr, room, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(taken, MAP_FAILED);
  EXPECT_EQ(error_of(name(), room, taken), 98u);
  EXPECT_EQ(error_of(name(), 0), 2u) << "nothing half made stays behind";
  munmap(taken, room);
  Process process(name(), room, ORK_TRACKING_OFF);
  EXPECT_EQ(error_of(name(), 0), 98u) << "by this process itself";
}

TEST_F(Shared, names_sizes_and_addresses_are_checked) {
  EXPECT_EQ(error_of(name(), 0), 2u);
  EXPECT_EQ(error_of(name(), (size_t{1} << 20) - 1), 22u);
  EXPECT_EQ(error_of("", room), 22u);
  EXPECT_EQ(error_of("a/b", room), 22u);
  Process process(name(), room, ORK_TRACKING_OFF);
  EXPECT_EQ(error_of(name(), room, reinterpret_cast<void*>(0x7e00'0000'0000)), 22u);
  remove();
  EXPECT_EQ(error_of(name(), 0), 2u);
  void* block = process.handle->alloc_fn(process.handle->mem_pool, 0, 100);
  EXPECT_NE(block, nullptr) << "who has it mapped keeps it";
  process.handle->free_fn(process.handle->mem_pool, 0, block);
}

TEST_F(Shared, exhausted_storage_refuses_objects_and_still_keeps_their_distances) {
  Process process(name(), size_t{1} << 20, ORK_TRACKING_ON);
  ork_handle* handle = process.handle;
  EXPECT_EQ(handle->alloc_fn(handle->mem_pool, 0, SIZE_MAX), nullptr);
  std::vector<char*> blocks;
  while (void* block = handle->alloc_fn(handle->mem_pool, 0, 240)) {
    std::memset(block, 0, 240);
    blocks.push_back(static_cast<char*>(block));
  }
  EXPECT_GT(blocks.size(), 500u);
  for (char* block : blocks) {
    for (int at = 0; at < 240; at += 24) {
      orklib_update_sttr_offset(handle, 0, block + at, at + 1);
    }
  }
  EXPECT_EQ(process.memory().live_distances, blocks.size() * 10);
  EXPECT_EQ(orklib_get_sttr_offset(handle, 0, blocks.back() + 24), 25);
  for (char* block : blocks) {
    handle->free_fn(handle->mem_pool, 0, block);
  }
  EXPECT_EQ(process.memory().live_blocks, 0u);
  EXPECT_EQ(process.memory().live_distances, 0u);
}

TEST_F(Shared, block_of_the_process_goes_back_to_it) {
  Process process(name(), room, ORK_TRACKING_OFF);
  const encoders::Handle own(ORK_TRACKING_OFF);
  void* block = own->alloc_fn(own->mem_pool, 0, 10);
  process.handle->free_fn(process.handle->mem_pool, 0, block);
  EXPECT_EQ(own.memory().live_blocks, 0u);
}

const uint8_t luid[16] = {1};

// Takes a block, gives another one back, and fails as a message that cannot be read.
uint32_t unmarshal_and_fail(ork_handle* handle, uint32_t, void*, void**, const uint8_t*, int32_t,
                            ork_message_handler, uint32_t* err) {
  handle->alloc_fn(handle->mem_pool, 0, 50);
  handle->free_fn(handle->mem_pool, 0, handle->alloc_fn(handle->mem_pool, 0, 60));
  *err = 90;
  return 43;
}

TEST_F(Shared, failed_frame_gives_back_what_it_took_and_nothing_else) {
  Process process(name(), room, ORK_TRACKING_OFF);
  ork_handle* handle = process.handle;
  uint32_t err = 0;
  ork_dispatcher* dispatcher = ork_dispatcher_create(&err);
  const ork_dispatch_entry entry{{luid, "message failing", unmarshal_and_fail, nullptr, nullptr},
                                 [](ork_handle*, uint32_t, void*) {}};
  ork_dispatcher_add(dispatcher, &entry, &err);
  ASSERT_EQ(err, 0u);
  void* kept = handle->alloc_fn(handle->mem_pool, 0, 40);
  uint8_t frame[43] = {ORK_MESSAGE_MARKER};
  frame[15] = sizeof frame;
  frame[27] = 1;
  ork_dispatch(dispatcher, handle, 0, nullptr, frame, sizeof frame, &err);
  EXPECT_EQ(err, 90u);
  EXPECT_EQ(process.memory().live_blocks, 1u);
  EXPECT_EQ(process.memory().live_bytes, 40u);
  handle->free_fn(handle->mem_pool, 0, kept);
  ork_dispatcher_free(dispatcher);
}

// Lets another process die while it holds the storage's lock.
void break_storage(const Process& process) {
  // the map of distances lies in the first page, as the lock does
  const uintptr_t inside = reinterpret_cast<uintptr_t>(process.handle->hd_mapping);
  auto* head = reinterpret_cast<ork::SharedHead*>(inside & ~uintptr_t{4095});
  const pid_t child = fork();
  if (child == 0) {
    head->lock.lock();
    _exit(0);
  }
  waitpid(child, nullptr, 0);
}

TEST_F(Shared, storage_whose_lock_died_says_so_in_every_process) {
  Process process(name(), room, ORK_TRACKING_OFF);
  ork_handle* handle = process.handle;
  void* block = handle->alloc_fn(handle->mem_pool, 0, 100);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(process.memory().error, 0u);
  break_storage(process);
  for (int attempt = 0; attempt < 2; ++attempt) {
    const ork_memory_report report = process.memory();
    EXPECT_EQ(report.error, 131u);
    EXPECT_EQ(report.live_blocks, 0u) << "unknown";
    EXPECT_EQ(handle->alloc_fn(handle->mem_pool, 0, 100), nullptr);
  }
  const encoders::Calls& calls = encoders::calls_of("fwe_cl_wayfind_mem_st");
  EXPECT_EQ(calls.create(handle, encoders::instance), nullptr);
}

TEST_F(Shared, full_storage_is_not_broken) {
  Process process(name(), size_t{1} << 20, ORK_TRACKING_OFF);
  ork_handle* handle = process.handle;
  while (handle->alloc_fn(handle->mem_pool, 0, 1000) != nullptr) {
  }
  const ork_memory_report report = process.memory();
  EXPECT_EQ(report.error, 0u);
  EXPECT_GT(report.live_blocks, 0u);
  EXPECT_EQ(report.refusals, 1u);
}

TEST(RobustLock, is_refused_for_good_after_its_holder_died) {
  void* memory = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  auto* lock = new (memory) ork::RobustLock;
  lock->lock();
  lock->unlock();
  const pid_t child = fork();
  if (child == 0) {
    lock->lock();
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  EXPECT_THROW(lock->lock(), std::system_error);
  EXPECT_THROW(lock->lock(), std::system_error);
  munmap(memory, 4096);
}

}  // namespace
}  // namespace shared_test
