// wayfind recording: reads recorded messages back and prints them.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "tools/common/failure.h"
#include "tools/common/file.h"
#include "tools/common/progress.h"
#include "tools/wayfind/client/message_printer.h"
#include "tools/wayfind/commands.h"
#include "tools/wayfind/data/data_check.h"
#include "tools/wayfind/link/session.h"

namespace wayfind {
namespace {

struct RecordingOptions {
  std::string path;
  std::string format = "text";
  Session session;
};

// The message of a recorded document.
struct Found {
  const MessageType* type = nullptr;
  uint32_t line_of_second = 0;  // where another one stands; 0: nowhere
};

uint32_t find_messages(void* ctx, const ork_xml_element* element) {
  auto& found = *static_cast<Found*>(ctx);
  const MessageType* type = find_message_type(element->name);
  if (type == nullptr) return 0;
  if (found.type != nullptr) found.line_of_second = element->line;
  found.type = type;
  return found.line_of_second;
}

class RecordingReader {
 public:
  RecordingReader(const std::string& path, ork_handle* handle, MessagePrinter& printer)
      : path_(path),
        text_(read_file_or_input(path, largest_input)),
        handle_(handle),
        printer_(printer),
        progress_(path + ": messages read") {}

  void print_all() {
    while (begin_ < text_.size()) {
      const std::string_view rest = std::string_view(text_).substr(begin_);
      if (rest.find_first_not_of(" \t\r\n") == std::string_view::npos) return;
      const size_t length = ork_xml_document_length(rest.data(), rest.size());
      if (length == 0)
        fail("from here on there is no whole recorded message; the messages before are complete");
      print(rest.substr(0, length));
      // On a terminal what is printed is progress enough.
      if (!prints_to_terminal_) progress_.step();
      line_ += static_cast<uint32_t>(
          std::count(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(length), '\n'));
      begin_ += length;
    }
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const {
    throw Failure(path_ + ":" + std::to_string(line_) + ": " + reason);
  }

  void print(std::string_view document) {
    uint32_t err = 0;
    char reason[256] = "";
    const Xml xml(ork_xml_parse(document.data(), document.size(), &err, reason, sizeof reason));
    if (err != 0)
      fail(*reason != 0 ? std::string("in the message that begins here, ") + reason
                        : words_for(err));
    check_elements(*xml, path_, line_);
    Found found;
    ork_xml_each(xml.get(), find_messages, &found);
    const MessageType* type = found.type;
    if (type == nullptr) fail("no recorded message; give a file that was recorded");
    if (found.line_of_second != 0) {
      line_ += found.line_of_second - 1;
      fail("a second message in one document; give a file that was recorded");
    }
    const auto destroy = [&](void* message) { type->destroy(handle_, ORK_NO_INSTANCE, message); };
    const std::unique_ptr<void, decltype(destroy)> message(
        type->from_xml(handle_, ORK_NO_INSTANCE, xml.get(), &err, reason, sizeof reason), destroy);
    if (err != 0) fail(*reason != 0 ? reason : words_for(err));
    printer_.print(*type, message.get());
  }

  std::string path_;
  std::string text_;
  ork_handle* handle_;
  MessagePrinter& printer_;
  Progress progress_;
  const bool prints_to_terminal_ = isatty(STDOUT_FILENO) != 0;
  size_t begin_ = 0;
  uint32_t line_ = 1;
};

void run(RecordingOptions& options) {
  options.session.begin();
  const Handle handle = options.session.make_handle(nullptr);
  MessagePrinter printer(handle.get(), format_named(options.format));
  RecordingReader reader(options.path, handle.get(), printer);
  printer.open("fwe_ui_wayfind");
  reader.print_all();
  printer.close("fwe_ui_wayfind");
}

}  // namespace

void add_recording(CLI::App& app) {
  CLI::App* command =
      app.add_subcommand("recording", "Read a recording back into messages and print them");
  const auto options = std::make_shared<RecordingOptions>();
  command->add_option("file", options->path, "Recording to read")->required();
  command->add_option("--format", options->format, "How to print")
      ->check(CLI::IsMember({"text", "xml"}))
      ->capture_default_str();
  options->session.add_options(*command);
  command->callback([options] { run(*options); });
}

}  // namespace wayfind
