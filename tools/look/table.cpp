#include "tools/look/table.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <numeric>

namespace look {
namespace {

constexpr std::string_view gap = "  ";
constexpr std::string_view nothing = "-";  // stands for an empty cell
constexpr std::string_view cut_mark = "\xe2\x80\xa6";
constexpr size_t least_width = 6;  // no column is cut to less

constexpr std::string_view bold = "\x1b[1m";
constexpr std::string_view cyan = "\x1b[36m";
constexpr std::string_view dim = "\x1b[2m";
constexpr std::string_view yellow = "\x1b[1;33m";
constexpr std::string_view plain = "\x1b[0m";
// Behind a marked cell where there is no colour, in place of a blank of the gap.
constexpr std::string_view mark = "*";

bool begins_character(char c) { return (static_cast<uint8_t>(c) & 0xc0) != 0x80; }

size_t characters(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

std::string_view first_characters(std::string_view text, size_t count) {
  size_t end = 0;
  for (; end < text.size(); ++end) {
    if (begins_character(text[end]) && count-- == 0) break;
  }
  return text.substr(0, end);
}

// The last name of a path, with as many before it as make it differ from those of the other
// columns.
std::string head_of(const Sheet& sheet, size_t column) {
  const std::string& path = sheet.columns()[column].path.text;
  const auto is_taken = [&](std::string_view end) {
    return std::any_of(sheet.columns().begin(), sheet.columns().end(), [&](const Column& other) {
      const std::string_view whole = other.path.text;
      return &other != &sheet.columns()[column] && whole.ends_with(end) &&
             (whole.size() == end.size() || whole[whole.size() - end.size() - 1] == '.');
    });
  };
  size_t dot = path.rfind('.');
  while (dot != std::string::npos && is_taken(std::string_view(path).substr(dot + 1)))
    dot = dot == 0 ? std::string::npos : path.rfind('.', dot - 1);
  std::string head = dot == std::string::npos ? path : path.substr(dot + 1);
  if (head.ends_with("[*]")) head.resize(head.size() - 3);
  for (char& c : head) c = static_cast<char>(std::toupper(static_cast<uint8_t>(c)));
  return head;
}

class Table {
 public:
  Table(std::string& out, const Sheet& sheet, const TableStyle& style)
      : out_(out), sheet_(sheet), style_(style) {
    for (size_t column = 0; column < sheet.columns().size(); ++column) {
      heads_.push_back(head_of(sheet, column));
      widths_.push_back(characters(heads_.back()));
    }
    for (size_t row = 0; row < sheet.rows(); ++row) {
      for (size_t column = 0; column < widths_.size(); ++column)
        widths_[column] = std::max(widths_[column], characters(cell(row, column)));
    }
    if (style.width != 0) shrink();
  }

  void put() {
    put_line([&](size_t column) { return std::string_view(heads_[column]); },
             [&](size_t) { return bold; }, [](size_t) { return false; });
    for (size_t row = 0; row < sheet_.rows(); ++row) {
      put_line([&](size_t column) { return cell(row, column); },
               [&](size_t column) { return colour(row, column); },
               [&](size_t column) { return !style_.colour && sheet_.is_marked(row, column); });
    }
  }

 private:
  std::string_view cell(size_t row, size_t column) const {
    const std::string_view text = sheet_.cell(row, column);
    return text.empty() ? nothing : text;
  }

  std::string_view colour(size_t row, size_t column) const {
    if (sheet_.is_marked(row, column)) return yellow;
    if (sheet_.cell(row, column).empty()) return dim;
    return sheet_.columns()[column].is_key ? cyan : std::string_view();
  }

  // Takes from the widest columns that hold no numbers, until a line fits.
  void shrink() {
    const size_t gaps = gap.size() * (widths_.size() - 1);
    for (;;) {
      const size_t total = std::accumulate(widths_.begin(), widths_.end(), gaps);
      if (total <= style_.width) return;
      size_t* widest = nullptr;
      for (size_t column = 0; column < widths_.size(); ++column) {
        const bool may_shrink =
            !sheet_.columns()[column].is_number() && widths_[column] > least_width;
        if (may_shrink && (widest == nullptr || widths_[column] > *widest))
          widest = &widths_[column];
      }
      if (widest == nullptr) return;
      --*widest;
    }
  }

  template <class Text, class Colour, class Marked>
  void put_line(const Text& text, const Colour& colour_of, const Marked& is_marked) {
    const size_t last = widths_.size() - 1;
    for (size_t column = 0; column <= last; ++column) {
      const std::string_view shown = text(column);
      const size_t length = std::min(characters(shown), widths_[column]);
      const size_t blanks = widths_[column] - length;
      const bool is_right = sheet_.columns()[column].is_number();
      if (is_right) out_.append(blanks, ' ');
      put_cell(shown, column, style_.colour ? colour_of(column) : std::string_view());
      const std::string_view behind = is_marked(column) ? mark : std::string_view();
      out_ += behind;
      if (column == last) break;
      out_.append((is_right ? 0 : blanks) + gap.size() - behind.size(), ' ');
    }
    out_ += '\n';
  }

  void put_cell(std::string_view text, size_t column, std::string_view colour) {
    out_ += colour;
    if (characters(text) <= widths_[column]) {
      out_ += text;
    } else {
      out_ += first_characters(text, widths_[column] - 1);
      out_ += cut_mark;
    }
    if (!colour.empty()) out_ += plain;
  }

  std::string& out_;
  const Sheet& sheet_;
  const TableStyle& style_;
  std::vector<std::string> heads_;
  std::vector<size_t> widths_;
};

}  // namespace

TableStyle style_for(int descriptor) {
  if (isatty(descriptor) == 0) return {};
  const char* const no_color = std::getenv("NO_COLOR");
  const char* const term = std::getenv("TERM");
  const bool is_dumb = term == nullptr || std::string_view(term) == "dumb";
  const bool is_refused = no_color != nullptr && *no_color != 0;
  winsize size{};
  const bool is_known = ioctl(descriptor, TIOCGWINSZ, &size) == 0;
  return {is_known ? size.ws_col : size_t{0}, !is_dumb && !is_refused};
}

void put_tables(std::string& out, const Sheets& sheets, const TableStyle& style) {
  bool is_first = true;
  const bool is_one = std::count_if(sheets.all().begin(), sheets.all().end(),
                                    [](const Sheet& s) { return s.rows() != 0; }) < 2;
  for (const Sheet& sheet : sheets.all()) {
    if (sheet.rows() == 0) continue;
    if (!is_first) out += '\n';
    is_first = false;
    if (!is_one) out += std::string(sheet.type().name) + ":\n";
    Table(out, sheet, style).put();
  }
}

}  // namespace look
