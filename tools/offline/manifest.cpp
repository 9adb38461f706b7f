// The subcommands manifest and manifest diff.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "tools/common/failure.h"
#include "tools/common/printable.h"
#include "tools/common/report.h"
#include "tools/common/standard_output.h"
#include "tools/offline/commands.h"
#include "tools/offline/manifest_diff.h"

namespace wayfind {
namespace {

// Of manifest diff.
enum : int { compatible = 0, incompatible = 1, no_answer = 2 };

struct Options {
  std::string library;
  std::string older;
  std::string newer;
};

Manifest manifest_of(const std::string& path) { return read_manifest(LibraryFile(path)); }

void print(const Manifest& manifest) {
  std::printf("module %s, %zu definitions\n", printable(manifest.module).c_str(),
              manifest.definitions.size());
  for (const Definition& definition : manifest.definitions) {
    std::printf("%s %s %u %5u %s %s\n", definition.luid.c_str(), definition.kind.c_str(),
                definition.newest, definition.size, definition.hash.c_str(),
                printable(definition.name).c_str());
  }
  write_out(printable_lines(manifest.build));
}

const char* verdict(bool breaks) { return breaks ? "not compatible" : "compatible"; }

int diff(const Manifest& older, const Manifest& newer) {
  bool new_sender = false;
  bool old_sender = false;
  for (const Change& change : compare_manifests(older, newer)) {
    std::printf("%s %s\n",
                change.breaks_new_sender || change.breaks_old_sender ? "break   " : "addition",
                printable(change.words).c_str());
    new_sender |= change.breaks_new_sender;
    old_sender |= change.breaks_old_sender;
  }
  std::printf("new sender, old reader: %s\nold sender, new reader: %s\n", verdict(new_sender),
              verdict(old_sender));
  return new_sender || old_sender ? incompatible : compatible;
}

int diff(const Options& options) {
  try {
    const Manifest older = manifest_of(options.older);
    const Manifest newer = manifest_of(options.newer);
    if (older.module != newer.module)
      throw Failure(options.newer + ": the manifest of " + newer.module + ", not of " +
                    older.module);
    const int status = diff(older, newer);
    expect_written();  // a verdict that nobody could read is none
    return status;
  } catch (const std::exception& exception) {  // files too large for the memory end here too
    report(words_for(exception));
    return no_answer;
  }
}

}  // namespace

void add_manifest(CLI::App& app) {
  CLI::App* manifest = app.add_subcommand("manifest",
                                          "Print what a library defines, by its file: LUID, kind, "
                                          "newest variant, size, definition, name");
  const auto options = std::make_shared<Options>();
  manifest->add_option("LIB", options->library, "The library, as a file");

  CLI::App* comparison = manifest->add_subcommand(
      "diff", "Can peers of two builds talk, each way? Status 0: yes, 1: no, 2: no answer");
  comparison->add_option("OLD", options->older, "The library of the older build")->required();
  comparison->add_option("NEW", options->newer, "The library of the newer build")->required();
  comparison->callback([options] {
    if (const int status = diff(*options); status != compatible) throw CLI::RuntimeError(status);
  });

  manifest->callback([options, comparison] {
    if (comparison->parsed()) return;
    if (options->library.empty()) throw CLI::RequiredError("LIB");
    print(manifest_of(options->library));
  });
}

}  // namespace wayfind
