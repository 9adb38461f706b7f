#include "tools/look/sheet.h"

namespace look {

void Sheet::add(ork_handle* handle, const Message& message) {
  for (const Column& column : columns_) {
    put_cell(cells_, handle, column, message);
    ends_.push_back(cells_.size());
  }
}

void Sheet::add_cell(std::string_view text, bool is_marked) {
  cells_ += text;
  ends_.push_back(cells_.size());
  if (is_marked) marks_.resize(ends_.size(), false);
  if (is_marked) marks_.back() = true;
}

bool Sheet::is_marked(size_t row, size_t column) const {
  const size_t place = row * columns_.size() + column;
  return place < marks_.size() && marks_[place];
}

std::string_view Sheet::cell(size_t row, size_t column) const {
  const size_t place = row * columns_.size() + column;
  const size_t begin = place == 0 ? 0 : ends_[place - 1];
  return std::string_view(cells_).substr(begin, ends_[place] - begin);
}

Sheets::Sheets(const wayfind_bundle& bundle, const std::string& chosen, const Roles& roles) {
  Messages members;
  for (unsigned i = 0; i < bundle.member_count; ++i) members.push_back(bundle.members[i].message);
  const auto add_sheet = [this](const wayfind_message* message, std::vector<Column> columns) {
    if (!columns.empty()) sheets_.emplace_back(*message, std::move(columns));
  };
  if (!chosen.empty()) {
    const std::vector<Word> paths = split(chosen);
    for (const wayfind_message* message : with_paths(paths, members))
      add_sheet(message, chosen_columns(paths, *message));
    return;
  }
  for (const wayfind_message* message : members)
    add_sheet(message, columns_by_role(*message, roles));
  if (!sheets_.empty()) return;
  for (const wayfind_message* message : members) add_sheet(message, all_columns(*message));
}

void Sheets::add(ork_handle* handle, const Message& message) {
  for (Sheet& sheet : sheets_) {
    if (&sheet.type() == message.type) sheet.add(handle, message);
  }
}

}  // namespace look
