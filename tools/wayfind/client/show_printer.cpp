#include "tools/wayfind/client/show_printer.h"

#include <unistd.h>

#include "tools/common/standard_output.h"
#include "tools/look/csv.h"
#include "tools/look/json.h"
#include "tools/look/mistake.h"
#include "tools/look/table.h"
#include "tools/wayfind/client/message_printer.h"

namespace wayfind {
namespace {

constexpr size_t enough_to_write = size_t{64} << 10;

}  // namespace

look::Sheets chosen_sheets(const wayfind_bundle& bundle, const std::string& columns) {
  try {
    return {bundle, columns, look::roles_of_tables()};
  } catch (const look::Mistake& mistake) {
    throw look::Mistake("--columns", mistake);
  }
}

ShowPrinter::ShowPrinter(ork_handle* handle, const wayfind_bundle& bundle,
                         const LookOptions& options)
    : handle_(handle),
      options_(options),
      selection_(bundle, options.wishes, look::roles_of_tables()),
      sheets_(chosen_sheets(bundle, options.columns)) {}

void ShowPrinter::put(const std::string& bundle, const std::vector<look::Message>& shown) {
  const std::vector<look::Message> selected = selection_.of(shown);
  if (options_.count) return write_out(std::to_string(selection_.count(selected)) + "\n");
  if (options_.format == "json") return put_json(selected);
  if (options_.format == "table" || options_.format == "csv") return put_sheets(selected);
  put_library_form(bundle, selected);
}

void ShowPrinter::put_library_form(const std::string& bundle,
                                   const std::vector<look::Message>& selected) {
  MessagePrinter printer(handle_, format_named(options_.format));
  printer.open(bundle);
  for (const look::Message& message : selected)
    printer.print(message_type(*message.type), message.msg);
  printer.close(bundle);
}

void ShowPrinter::put_json(const std::vector<look::Message>& selected) {
  look::JsonDocument document(handle_, {options_.lines, options_.states});
  std::string text;
  document.open(text);
  for (const look::Message& message : selected) {
    document.put(text, message);
    if (text.size() < enough_to_write) continue;
    write_out(text);
    text.clear();
  }
  document.close(text);
  write_out(text);
}

void ShowPrinter::put_sheets(const std::vector<look::Message>& selected) {
  for (const look::Message& message : selected) sheets_.add(handle_, message);
  std::string text;
  if (options_.format == "csv") {
    look::put_csv(text, sheets_);
  } else {
    look::put_tables(text, sheets_, look::style_for(STDOUT_FILENO));
  }
  write_out(text);
}

}  // namespace wayfind
