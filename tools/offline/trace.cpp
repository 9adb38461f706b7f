// The subcommands trace decode and trace texts.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "tools/common/failure.h"
#include "tools/common/file.h"
#include "tools/common/printable.h"
#include "tools/offline/commands.h"
#include "tools/offline/trace_decode.h"

namespace wayfind {
namespace {

struct Options {
  std::string library;
  std::string traces;
  bool forced = false;
  bool json = false;
};

// UTC, to the nanosecond.
std::string time_text(uint64_t nanoseconds) {
  const auto seconds = static_cast<time_t>(nanoseconds / 1'000'000'000);
  std::tm utc{};
  if (gmtime_r(&seconds, &utc) == nullptr) return std::to_string(nanoseconds);
  char date[40];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &utc);
  char text[64];
  std::snprintf(text, sizeof text, "%s.%09uZ", date,
                static_cast<unsigned>(nanoseconds % 1'000'000'000));
  return text;
}

nlohmann::json argument_json(const TraceArgument& argument) {
  if (const auto* text = std::get_if<std::string>(&argument)) return *text;
  if (const auto* number = std::get_if<uint32_t>(&argument)) return *number;
  return {{"pointer", std::get<TracePointer>(argument).address}};
}

void print_json(const DecodedTrace& decoded) {
  nlohmann::json arguments = nlohmann::json::array();
  for (const TraceArgument& argument : decoded.trace.arguments)
    arguments.push_back(argument_json(argument));
  const nlohmann::ordered_json line = {
      {"time", time_text(decoded.trace.time)},
      {"time_ns", decoded.trace.time},
      {"thread", decoded.trace.thread},
      {"module", decoded.module},
      {"module_id", decoded.trace.module},
      {"level", level_name(decoded.trace.level_word)},
      {"section", decoded.text.section},
      {"index", decoded.text.index},
      {"words", decoded.words},
      {"text", decoded.text.text.substr(decoded.text.text.starts_with(' ') ? 1 : 0)},
      {"arguments", std::move(arguments)}};
  // Texts of a process need not be UTF-8, and in ASCII they drive no terminal.
  constexpr bool in_ascii = true;
  std::puts(line.dump(-1, ' ', in_ascii, nlohmann::json::error_handler_t::replace).c_str());
}

void print_line(const DecodedTrace& decoded) {
  const std::string module =
      decoded.module.empty() ? "module " + std::to_string(decoded.trace.module) : decoded.module;
  std::printf("%s %u %s %s %s\n", time_text(decoded.trace.time).c_str(), decoded.trace.thread,
              printable(module).c_str(), level_name(decoded.trace.level_word).c_str(),
              printable(decoded.words).c_str());
}

void decode(const Options& options) {
  const LibraryFile library(options.library);
  const TraceTexts texts(library);
  const std::string bytes = read_file_or_input(options.traces, largest_input);
  TraceFile file(bytes_of(bytes), options.traces);
  DecodeCount count;
  try {
    count = decode_traces(texts, library.build_id(), file, options.forced,
                          options.json ? print_json : print_line);
  } catch (const Failure& failure) {
    throw Failure(options.traces + ": " + failure.what());
  }
  if (count.damaged != 0) std::fprintf(stderr, "%zu damaged records skipped\n", count.damaged);
  if (count.foreign != 0)
    std::fprintf(stderr, "%zu traces of other libraries skipped\n", count.foreign);
  if (count.unproven != 0)
    std::fprintf(stderr, "%zu traces of an unknown build skipped; --force decodes them\n",
                 count.unproven);
}

void texts(const Options& options) {
  const LibraryFile library(options.library);
  const TraceTexts texts(library);
  for (const TraceText& text : texts.all()) {
    std::printf("%u\t%u\t%s\t%s\n", text.section, text.index, text.pattern.c_str(),
                printable(text.text).c_str());
  }
}

}  // namespace

void add_trace(CLI::App& app) {
  CLI::App* trace =
      app.add_subcommand("trace", "Turn stored traces into words, by the library's file");
  trace->require_subcommand(1);
  const auto options = std::make_shared<Options>();

  CLI::App* decoding =
      trace->add_subcommand("decode", "Print the traces of a trace file, one on a line");
  decoding->add_option("LIB", options->library, "The library that traced, as a file")->required();
  decoding->add_option("TRACEFILE", options->traces, "What the process stored")->required();
  decoding->add_flag("--force", options->forced,
                     "Decode traces of another build of the library as well");
  decoding->add_flag("--json", options->json, "Print each trace as a JSON object on a line");
  decoding->callback([options] { decode(*options); });

  CLI::App* listing = trace->add_subcommand(
      "texts", "Print all texts: section, index, pattern of the arguments, text");
  listing->add_option("LIB", options->library, "The library, as a file")->required();
  listing->callback([options] { texts(*options); });
}

}  // namespace wayfind
