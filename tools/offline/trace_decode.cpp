#include "tools/offline/trace_decode.h"

#include <cstdio>
#include <map>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

std::string argument_text(char conversion, const TraceArgument* argument) {
  constexpr const char* mismatch = "<?>";
  if (argument == nullptr) return mismatch;
  const auto* text = std::get_if<std::string>(argument);
  const auto* number = std::get_if<uint32_t>(argument);
  const auto* pointer = std::get_if<TracePointer>(argument);
  if (conversion == 's' && text != nullptr) return *text;
  if (conversion == 'd' && number != nullptr) return std::to_string(static_cast<int32_t>(*number));
  if (conversion == 'u' && number != nullptr) return std::to_string(*number);
  if (conversion == 'p' && pointer != nullptr) {
    char digits[24];
    std::snprintf(digits, sizeof digits, "0x%llx",
                  static_cast<unsigned long long>(pointer->address));
    return digits;
  }
  return mismatch;
}

std::string shown(const std::string& build_id) { return build_id.empty() ? "unknown" : build_id; }

void expect_same_build(const std::string& traced, const std::string& library) {
  if (traced == library && !library.empty()) return;
  throw Failure("the traces are of build " + shown(traced) + ", the library is build " +
                shown(library) + "; --force decodes them all the same");
}

// What the file said of its libraries and modules so far.
class Context {
 public:
  void take(TracedFile&& file) { build_ids_[file.number] = std::move(file.build_id); }
  void take(TracedModule&& module) { modules_[module.id] = std::move(module.name); }

  const std::string* build_id(uint16_t file) const { return found(build_ids_, file); }
  std::string module(uint16_t id) const {
    const std::string* name = found(modules_, id);
    return name != nullptr ? *name : std::string();
  }

 private:
  static const std::string* found(const std::map<uint16_t, std::string>& map, uint16_t number) {
    const auto at = map.find(number);
    return at == map.end() ? nullptr : &at->second;
  }

  std::map<uint16_t, std::string> build_ids_;
  std::map<uint16_t, std::string> modules_;
};

}  // namespace

std::string fill_text(std::string_view text, const std::vector<TraceArgument>& arguments) {
  std::string words;
  size_t used = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    if (text[i] != '%' || (next != 's' && next != 'd' && next != 'u' && next != 'p')) {
      words += text[i];
      continue;
    }
    words += argument_text(next, used < arguments.size() ? &arguments[used] : nullptr);
    ++used;
    ++i;
  }
  return words;
}

std::string level_name(uint32_t level_word) {
  switch (level_word) {
    case 0: return "fatal";
    case 0x3000000: return "error";
    case 0x6000000: return "info";
    case 0x7000000: return "debug";
    default: return std::to_string(level_word);
  }
}

DecodeCount decode_traces(const TraceTexts& texts, const std::string& build_id, TraceFile& file,
                          bool forced, const std::function<void(const DecodedTrace&)>& sink) {
  if (!forced && file.build_id()) expect_same_build(*file.build_id(), build_id);
  DecodeCount count;
  Context context;
  while (std::optional<TraceRecord> record = file.next()) {
    if (auto* traced = std::get_if<TracedFile>(&*record)) {
      context.take(std::move(*traced));
      continue;
    }
    if (auto* module = std::get_if<TracedModule>(&*record)) {
      context.take(std::move(*module));
      continue;
    }
    const Trace& trace = std::get<Trace>(*record);
    const TraceText* text = texts.find(trace.section, trace.index);
    const std::string* raised_by = context.build_id(trace.file);
    if (!forced && raised_by == nullptr) {
      ++count.unproven;
    } else if (text == nullptr || (!forced && *raised_by != build_id)) {
      ++count.foreign;
    } else {
      std::string words =
          fill_text(text->text.substr(text->text.starts_with(' ') ? 1 : 0), trace.arguments);
      sink({trace, *text, context.module(trace.module), std::move(words)});
      ++count.decoded;
    }
  }
  count.damaged = file.damaged();
  return count;
}

}  // namespace wayfind
