#include "stage.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "fwe_ui_wayfind/fwe_cl_wayfind_mem_st.h"
#include "fwe_ui_wayfind/module.h"
#include "ork/flight.h"
#include "tools/common/failure.h"
#include "tools/common/file.h"
#include "tools/offline/trace_decode.h"

namespace trace_sites {
namespace {

struct Heard {
  Place place;
  std::string level;
  std::string words;

  bool operator==(const Heard&) const = default;
  friend void PrintTo(const Heard& heard, std::ostream* out) {
    *out << heard.place.first << "/" << heard.place.second << " " << heard.level << ": "
         << heard.words;
  }
};

const wayfind::LibraryFile& library() {
  static const wayfind::LibraryFile file(WAYFIND_LIBRARY);
  return file;
}

const wayfind::TraceTexts& texts() {
  static const wayfind::TraceTexts all(library());
  return all;
}

// One file for all children in turn, removed when the parent ends.
const std::string& trace_path() {
  struct File {
    std::string path = testing::TempDir() + "trace_sites." + std::to_string(getpid());
    ~File() { std::remove(path.c_str()); }
  };
  static const File file;
  return file.path;
}

[[noreturn]] void run_child(const Action& action) {
  prctl(PR_SET_DUMPABLE, 0);  // an abort is what is wanted: no core
  dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
  uint32_t err = 0;
  flight_open(trace_path().c_str(), &err);
  action();
  flight_close();
  _exit(err == 0 ? 0 : 1);
}

// What every child needs is made before the first of them: the module's number, the decoder's texts
// and those of the spy, which reads the library's file at the first trace that it sees.
void prepare() {
  static const bool done = [] {
    trace_path();
    texts();
    ork_fwe_ui_wayfind_trace_init();
    const spy::Log log;
    fwe_cl_wayfind_mem_st_set_instance_embedded(nullptr, instance, nullptr);
    return true;
  }();
  (void)done;
}

// How the child ended: 0, or SIGABRT, or another number for what should not be.
int run(const Action& action) {
  prepare();
  const pid_t child = fork();
  if (child == 0) run_child(action);
  if (child < 0) throw std::runtime_error("no child process");
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

std::vector<Heard> read_traces() {
  const std::string bytes = wayfind::read_file(trace_path(), wayfind::largest_input);
  wayfind::TraceFile file(wayfind::bytes_of(bytes), "trace");
  std::vector<Heard> heard;
  const wayfind::DecodeCount count = wayfind::decode_traces(
      texts(), library().build_id(), file, false, [&](const wayfind::DecodedTrace& decoded) {
        EXPECT_EQ(decoded.module, "ork_fwe_ui_wayfind");
        heard.push_back({{decoded.text.section, decoded.text.index},
                         wayfind::level_name(decoded.trace.level_word),
                         decoded.words});
      });
  EXPECT_EQ(count.damaged, 0u);
  EXPECT_EQ(count.foreign, 0u);
  EXPECT_EQ(count.unproven, 0u);
  return heard;
}

std::string filled(const std::string& text, const std::vector<std::string>& arguments) {
  std::string words;
  size_t used = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    words += text[i] == '%' ? arguments.at(used++) : std::string(1, text[i]);
    if (text[i] == '%') ++i;
  }
  return words;
}

Heard told(const Expected& expected) {
  return {told_order().place(expected.function, expected.text, expected.nth), expected.level,
          filled(expected.text, expected.arguments)};
}

// When the change is due: 0 is never.
unsigned calls_left = 0;
bool counting = false;
const Action* due_change = nullptr;

void tick() {
  if (counting && calls_left != 0 && --calls_left == 0) (*due_change)();
}

// The handle's own functions, in front of the runtime's.
ork_alloc_fn next_alloc;
ork_free_fn next_free;
ork_write_notify_fn next_write_notify;
ork_counter_notify_fn next_counter_notify;

void* ticking_alloc(void* pool, uint32_t number, size_t size) {
  tick();
  return next_alloc(pool, number, size);
}
void ticking_free(void* pool, uint32_t number, void* block) {
  tick();
  next_free(pool, number, block);
}
void ticking_write_notify(ork_handle* handle, const void* address, size_t length, uint32_t number,
                          const void* owner) {
  tick();
  next_write_notify(handle, address, length, number, owner);
}
void ticking_counter_notify(void* pool, void* counter, uint32_t one, uint32_t number) {
  tick();
  next_counter_notify(pool, counter, one, number);
}

// Ticks behind a function of the runtime.
template <class R, class... A>
spy::Replacement ticking(R (*function)(A...)) {
  return spy::replace(function, [function](A... args) {
    struct Behind {
      ~Behind() { tick(); }
    } const behind;
    return spy::next(function)(args...);
  });
}

ork_type_info* copy_of(const ork_type_info& type) { return new ork_type_info(type); }

}  // namespace

void count_calls_from_now() { counting = true; }

std::set<Place>& raised() {
  static std::set<Place> places;
  return places;
}

void expect_traces(const std::vector<Expected>& expected, const Action& action) {
  std::vector<Heard> awaited;
  for (const Expected& one : expected) awaited.push_back(told(one));
  const int end = run(action);
  EXPECT_EQ(end, expected.back().level == "fatal" ? SIGABRT : 0) << expected.back().function;
  EXPECT_EQ(read_traces(), awaited) << expected.back().function;
  for (const Heard& one : awaited) raised().insert(one.place);
}

void expect_trace_after_change(const Expected& expected, const Action& action,
                               const Action& change) {
  constexpr unsigned most_calls = 200;
  const Heard awaited = told(expected);
  due_change = &change;
  const spy::Replacement runtime[] = {ticking(orklib_get_sttr_offset),
                                      ticking(orklib_update_sttr_offset),
                                      ticking(ork_get_instance_variant)};
  bool reached = false;
  for (unsigned calls = 1; calls <= most_calls && !reached; ++calls) {
    calls_left = calls;
    const int end = run(action);
    const std::vector<Heard> heard = read_traces();
    if (heard.empty() || !(heard.front() == awaited)) continue;
    EXPECT_EQ(end, expected.level == "fatal" ? SIGABRT : 0) << expected.function;
    raised().insert(awaited.place);
    reached = true;
  }
  calls_left = 0;
  EXPECT_TRUE(reached) << expected.function << ": " << awaited.words << " " << expected.nth;
}

TickingHandle::TickingHandle(ork_tracking tracking) {
  handle_ = kit::Handle([tracking](ork_options& options) {
              options.tracking = tracking;
              options.cr_instance = instance;
            }).release();
  next_alloc = std::exchange(handle_->alloc_fn, ticking_alloc);
  next_free = std::exchange(handle_->free_fn, ticking_free);
  next_write_notify = std::exchange(handle_->write_notify_fn, ticking_write_notify);
  next_counter_notify = std::exchange(handle_->counter_notify_fn, ticking_counter_notify);
}

void TickingHandle::corrupt() const {
  if (handle_->sttr_info == nullptr) handle_->sttr_info = new ork_sttr_info{};
  handle_->sttr_info->sttr_mode = 0x1234;
}

ork_type_info* without_variants(const ork_type_info& type) {
  ork_type_info* copy = copy_of(type);
  copy->varinfo = nullptr;
  return copy;
}

ork_type_info* with_fewer_variants(const ork_type_info& type) {
  ork_type_info* copy = copy_of(type);
  copy->varinfo = new ork_variant_info(*type.varinfo);
  copy->varinfo->n_variants = -1;
  return copy;
}

std::string words_of(int error) { return std::strerror(error); }

std::string digits_of(const void* pointer) {
  char digits[24];
  std::snprintf(digits, sizeof digits, "0x%llx",
                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(pointer)));
  return digits;
}

}  // namespace trace_sites
