#include "tools/wayfind/client/watch.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <thread>

#include "tools/common/standard_output.h"
#include "tools/look/selection.h"
#include "tools/look/table.h"
#include "tools/look/watched.h"
#include "tools/wayfind/client/show_printer.h"

namespace wayfind {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view screen_begin = "\x1b[?7l\x1b[2J";  // lines are cut and not wrapped
constexpr std::string_view screen_home = "\x1b[H";
constexpr std::string_view line_rest = "\x1b[K";  // what stood there goes
constexpr std::string_view screen_rest = "\x1b[J";
constexpr std::string_view screen_end = "\x1b[?7h\x1b[J\n";

bool is_terminal() { return isatty(STDOUT_FILENO) != 0; }

size_t terminal_height() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 ? size.ws_row : 24;
}

void leave_screen() {
  if (!is_terminal()) return;
  const ssize_t written = write(STDOUT_FILENO, screen_end.data(), screen_end.size());
  static_cast<void>(written);  // a terminal that has gone needs nothing
}

// Nothing is left to be written between two rounds, and within a round whole lines go out: the
// process may end wherever it is.
void end_process(int) {
  leave_screen();
  _exit(0);
}

void end_on_signals() {
  struct sigaction action {};
  action.sa_handler = end_process;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

using Calendar = std::tm* (*)(const std::time_t*, std::tm*);
std::string time_now(Calendar calendar, const char* form) {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  char text[32];
  std::strftime(text, sizeof text, form, calendar(&now, &parts));
  return text;
}

std::string shown(const std::string& cell) { return cell.empty() ? "-" : cell; }

std::string line_of(const look::Change& change) {
  const std::string what = std::string(change.type->name) + " " + shown(change.key);
  switch (change.kind) {
    case look::Change::Kind::come: return "+ " + what;
    case look::Change::Kind::gone: return "- " + what;
    case look::Change::Kind::other: break;
  }
  return "~ " + what + " " + change.path + ": " + shown(change.before) + " -> " +
         shown(change.after) + (change.rate.empty() ? "" : " " + change.rate);
}

class Watch : public ShowOutput {
 public:
  Watch(ork_handle* handle, const Subject& subject, const LookOptions& options)
      : handle_(handle),
        subject_(subject),
        selection_(*subject.bundle, options.wishes, look::roles_of_tables()),
        watched_(watched(*subject.bundle, options.columns)) {}
  ~Watch() override {
    if (has_begun_) leave_screen();
  }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  void put(const std::string&, const std::vector<look::Message>& messages) override {
    const Clock::time_point now = Clock::now();
    const std::chrono::duration<double> passed = now - last_;
    last_ = now;
    watched_.take(handle_, selection_.of(messages), passed.count());
    if (is_terminal_) {
      renew_screen();
    } else {
      put_changes();
    }
    has_begun_ = true;
  }

 private:
  static look::Watched watched(const wayfind_bundle& bundle, const std::string& columns) {
    static_cast<void>(chosen_sheets(bundle, columns));  // tells mistakes with the option's name
    return {bundle, columns, look::roles_of_tables()};
  }

  void put_changes() const {
    const std::string time = time_now(gmtime_r, "%Y-%m-%dT%H:%M:%SZ ");
    for (const look::Change& change : watched_.changes()) {
      write_out(time + line_of(change) + "\n");
      expect_written();
    }
  }

  void renew_screen() const {
    std::string table;
    look::put_tables(table, watched_.tables(), look::style_for(STDOUT_FILENO));
    std::string screen(has_begun_ ? "" : screen_begin);
    screen += screen_home;
    put_screen_line(screen, subject_.name + " at " + time_now(localtime_r, "%H:%M:%S"));
    const size_t room = terminal_height() - 2;
    const auto lines = static_cast<size_t>(std::count(table.begin(), table.end(), '\n'));
    std::string_view rest = table;
    for (size_t line = 0; line < std::min(room, lines); ++line) {
      if (line + 1 == room && lines > room) break;
      const size_t end = rest.find('\n');
      put_screen_line(screen, rest.substr(0, end));
      rest.remove_prefix(end + 1);
    }
    if (lines > room) put_screen_line(screen, std::to_string(lines - room + 1) + " lines more");
    write_out(screen += screen_rest);
    expect_written();
  }

  static void put_screen_line(std::string& screen, std::string_view line) {
    screen += line;
    screen += line_rest;
    screen += '\n';
  }

  ork_handle* handle_;
  const Subject& subject_;
  look::Selection selection_;
  look::Watched watched_;
  Clock::time_point last_ = Clock::now();
  const bool is_terminal_ = is_terminal();
  bool has_begun_ = false;
};

}  // namespace

void watch(Client& client, const Subject& subject, const LookOptions& options, double seconds) {
  Watch output(client.handle(), subject, options);
  end_on_signals();
  const std::chrono::duration<double> pause(seconds);
  for (;;) {
    client.ask(subject, output);
    std::this_thread::sleep_for(pause);
  }
}

}  // namespace wayfind
