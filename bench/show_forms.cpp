// Times the forms of a show of hop channels, beside the library's own text.
#include <benchmark/benchmark.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "tests/support/exports.h"
#include "tests/support/sample.h"
#include "tools/look/csv.h"
#include "tools/look/json.h"
#include "tools/look/selection.h"
#include "tools/look/sheet.h"
#include "tools/look/table.h"

namespace {

const wayfind_bundle& hop_channels() {
  for (unsigned i = 0; i < wayfind_bundle_count; ++i) {
    if (std::strcmp(wayfind_bundles[i].name, "fwe_cl_wayfind_show_hop_chan_response") == 0)
      return wayfind_bundles[i];
  }
  std::abort();
}

ork_handle* shared_handle() {
  static ork_handle* const handle = [] {
    ork_options options;
    ork_options_init(&options);
    uint32_t err = 0;
    return ork_handle_create(&options, &err);
  }();
  return handle;
}

std::vector<look::Message> make_show(size_t count) {
  using Create = void* (*)(ork_handle*, uint32_t);
  const wayfind_message& type = *hop_channels().members[1].message;
  const auto create = kit::function<Create>(type.functions, "_create");
  std::vector<look::Message> shown;
  shown.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    const look::Message& made =
        shown.emplace_back(shared_handle(), type, create(shared_handle(), ORK_NO_INSTANCE));
    sample::fill(shared_handle(), *type.records[0], const_cast<uint8_t*>(made.at[0]), 0);
  }
  return shown;
}

// Lives as long as the process.
const std::vector<look::Message>& show_of(size_t count) {
  static std::map<size_t, std::vector<look::Message>> shows;
  const auto found = shows.find(count);
  return found != shows.end() ? found->second
                              : shows.emplace(count, make_show(count)).first->second;
}

const std::vector<look::Message>& show_for(const benchmark::State& state) {
  return show_of(static_cast<size_t>(state.range(0)));
}

void text(benchmark::State& state) {
  using Print = uint32_t (*)(ork_handle*, uint32_t, char*, const void*, uint32_t, uint32_t*);
  const std::vector<look::Message>& shown = show_for(state);
  const auto print = kit::function<Print>(shown[0].type->functions, "_print");
  std::vector<char> buffer(size_t{64} << 10);
  for (auto _ : state) {
    for (const look::Message& message : shown) {
      uint32_t err = 0;
      buffer[0] = 0;
      benchmark::DoNotOptimize(print(shared_handle(), ORK_NO_INSTANCE, buffer.data(), message.msg,
                                     static_cast<uint32_t>(buffer.size()), &err));
    }
  }
}

void json(benchmark::State& state) {
  for (auto _ : state) {
    look::JsonDocument document(shared_handle(), {});
    std::string out;
    for (const look::Message& message : show_for(state)) {
      document.put(out, message);
      if (out.size() > size_t{64} << 10) out.clear();
    }
    benchmark::DoNotOptimize(out);
  }
}

look::Sheets sheets_of(const benchmark::State& state) {
  look::Sheets sheets(hop_channels(), "", look::roles_of_tables());
  for (const look::Message& message : show_for(state)) sheets.add(shared_handle(), message);
  return sheets;
}

void table(benchmark::State& state) {
  for (auto _ : state) {
    std::string out;
    look::put_tables(out, sheets_of(state), {});
    benchmark::DoNotOptimize(out);
  }
}

void csv(benchmark::State& state) {
  for (auto _ : state) {
    std::string out;
    look::put_csv(out, sheets_of(state));
    benchmark::DoNotOptimize(out);
  }
}

void where_and_sort(benchmark::State& state) {
  const look::Wishes wishes{.where = "hop_chan.dst_site_id != 0 and probe.tx_state != 9",
                            .sort = "-stats.send_packets"};
  const look::Selection selection(hop_channels(), wishes, look::roles_of_tables());
  for (auto _ : state) benchmark::DoNotOptimize(selection.of(show_for(state)));
}

void sizes(benchmark::internal::Benchmark* form) {
  form->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
}
BENCHMARK(text)->Apply(sizes);
BENCHMARK(table)->Apply(sizes);
BENCHMARK(json)->Apply(sizes);
BENCHMARK(csv)->Apply(sizes);
BENCHMARK(where_and_sort)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
