#include "tools/wayfind/client/look_options.h"

#include <CLI/CLI.hpp>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

std::string is_count(const std::string& text) {
  const bool is_one = text.find_first_not_of("0123456789") == std::string::npos;
  return is_one ? "" : "write a number from 0 on, not " + text;
}

}  // namespace

void LookOptions::add_to(CLI::App& command) {
  command.add_option("--format", format, "How to print: as text if nothing is said")
      ->check(CLI::IsMember({"text", "xml", "table", "json", "csv"}));
  command.add_option("--columns", columns, "What stands in a table or in csv: paths, by commas")
      ->type_name("PATHS");
  command.add_flag("--lines", lines, "JSON with a message a line, in place of one array");
  command.add_flag("--states", states, "JSON with the states of tracked fields");
  add_where_to(command);
  command.add_option("--sort", wishes.sort, "By the value of a path; the other way round with -")
      ->type_name("PATH");
  command.add_option("--id", wishes.id, "Only what has this key: its values, by commas")
      ->type_name("KEY");
  command.add_option("--limit", wishes.limit, "At most so many of what repeats")
      ->check(CLI::Validator(is_count, ""));
  command.add_flag("--count", count, "Print how many there are, and nothing else");
}

CLI::Option* LookOptions::add_where_to(CLI::App& command) {
  return command
      .add_option("--where", wishes.where, "Only what fits; docs/expressions.md tells how")
      ->type_name("EXPRESSION");
}

void LookOptions::expect_fitting(bool tracks) const {
  if (lines && format != "json") throw Failure("--lines belongs to --format json");
  if (states && format != "json") throw Failure("--states belongs to --format json");
  if (states && !tracks) throw Failure("--states belongs to --tracking on");
  if (!columns.empty() && format != "table" && format != "csv")
    throw Failure("--columns belongs to --format table or csv");
  if (count && !format.empty())
    throw Failure("--count prints a number; leave out --format " + format);
}

}  // namespace wayfind
