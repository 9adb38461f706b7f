#include "tools/wayfind/link/protocol.h"

#include <charconv>

#include "tools/common/failure.h"
#include "tools/common/printable.h"
#include "tools/common/release.h"

namespace wayfind {
namespace {

constexpr std::string_view greeting = "wayfind 1 ";
constexpr std::string_view show = "show ";
constexpr std::string_view error = "error ";
constexpr std::string_view ok = "ok";

}  // namespace

std::string announcement_text(const ork_type_list& list) {
  const std::string text = text_of(list);
  return std::string(greeting) + std::to_string(text.size()) + "\n" + text;
}

size_t announced_length(const std::string& line) {
  size_t length = 0;
  const char* end = line.data() + line.size();
  const bool greets = line.starts_with(greeting);
  const auto result = greets ? std::from_chars(line.data() + greeting.size(), end, length)
                             : std::from_chars_result{end, std::errc::invalid_argument};
  if (result.ec != std::errc() || result.ptr != end || length > longest_announcement) {
    throw Failure("the first line is no greeting of wayfind: " + quoted(line));
  }
  return length;
}

std::string request(const std::string& subject) { return std::string(show) + subject + "\n"; }

std::string requested_subject(const std::string& line) {
  if (!line.starts_with(show)) throw Failure("no request: " + quoted(line));
  return line.substr(show.size());
}

std::string acceptance() { return std::string(ok) + "\n"; }

std::string refusal(const std::string& reason) {
  return std::string(error) + printable(reason).substr(0, longest_line - error.size()) + "\n";
}

void expect_acceptance(const std::string& line) {
  if (line == ok) return;
  if (line.starts_with(error)) throw Failure("the agent refuses: " + line.substr(error.size()));
  throw Failure("the agent answers a request with what is no answer: " + quoted(line));
}

}  // namespace wayfind
