// Stored traces turned into words by the library that raised them.
#pragma once

#include <functional>
#include <string>

#include "tools/offline/trace_file.h"
#include "tools/offline/trace_texts.h"

namespace wayfind {

// Its texts are as the files have them, fit for a terminal or not.
struct DecodedTrace {
  const Trace& trace;
  const TraceText& text;
  std::string module;  // empty when the file does not name it
  std::string words;   // the text without its leading blank, the arguments in their places
};

struct DecodeCount {
  size_t decoded = 0;
  size_t damaged = 0;  // stretches without a whole record
  // traces of other libraries, and of the library's sections where it has no such entry
  size_t foreign = 0;
  // traces of which no record says who raised them; decoded all the same when forced
  size_t unproven = 0;
};

// Hands each trace of the library to sink, in the order of the file. A file that begins with
// another build id fails, unless forced.
DecodeCount decode_traces(const TraceTexts& texts, const std::string& build_id, TraceFile& file,
                          bool forced, const std::function<void(const DecodedTrace&)>& sink);

// The text with its arguments in place. A place whose argument is missing or of another kind reads
// "<?>".
std::string fill_text(std::string_view text, const std::vector<TraceArgument>& arguments);

// "fatal", "error", "info", "debug", or the number.
std::string level_name(uint32_t level_word);

}  // namespace wayfind
