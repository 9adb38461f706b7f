#include "tools/wayfind/data/data_file.h"

#include <cerrno>

#include "tools/common/failure.h"
#include "tools/common/file.h"
#include "tools/wayfind/data/data_check.h"

namespace wayfind {
namespace {

using FromXml = void(ork_handle*, uint32_t, const char*, ork_xml*, void*, uint32_t*, char*,
                     uint32_t);

constexpr uint32_t path_size = 256;

// "line 3: reason" as "path:3: reason".
std::string located(const std::string& path, std::string_view reason) {
  constexpr std::string_view line = "line ";
  return path + ":" + (reason.starts_with(line) ? "" : " ") +
         std::string(reason.starts_with(line) ? reason.substr(line.size()) : reason);
}

Xml parse(const std::string& path) {
  const std::string text = read_file(path, largest_data);
  uint32_t err = 0;
  char reason[256] = "";
  Xml xml(ork_xml_parse(text.data(), text.size(), &err, reason, sizeof reason));
  if (err != 0) throw Failure(located(path, *reason != 0 ? reason : words_for(err)));
  return xml;
}

std::string reason_of(uint32_t err) {
  switch (err) {
    case EINVAL: return "no value of its kind, or one out of its range";
    case ENOSPC: return "longer than its field";
    default: return words_for(err);
  }
}

}  // namespace

DataFile::DataFile(const std::string& path) : path_(path), xml_(parse(path)) {
  check_elements(*xml_, path);
}

uint32_t DataFile::count(const wayfind_record& record) const {
  uint32_t nodes = 0;
  expect_done(
      xml_get_element_nodecount(xml_.get(), ("//" + std::string(record.name)).c_str(), &nodes),
      path_);
  return nodes;
}

void DataFile::read(const MessageType& type, ork_handle* handle, MessageList& messages,
                    Progress& progress) const {
  const wayfind_message& schema = *type.schema;
  const uint32_t entries = count(*schema.records[0]);
  for (unsigned slot = 1; slot < schema.record_count; ++slot) {
    const uint32_t others = count(*schema.records[slot]);
    if (others != entries) {
      throw Failure(path_ + ": " + std::to_string(entries) + " of <" + schema.records[0]->name +
                    "> and " + std::to_string(others) + " of <" + schema.records[slot]->name +
                    ">; they belong together, so give as many of one as of the other");
    }
  }
  for (uint32_t number = 1; number <= entries; ++number) {
    void* message = messages.add();
    for (unsigned slot = 0; slot < schema.record_count; ++slot) {
      read_record(*schema.records[slot], number, handle, type.record(handle, message, slot));
    }
    progress.step();
  }
}

void DataFile::read_record(const wayfind_record& record, uint32_t number, ork_handle* handle,
                           void* target) const {
  FromXml* from_xml = nullptr;
  find_function(record.functions, "_from_xml", from_xml);
  char path[path_size];
  expect_done(ork_xml_nth_path(path, sizeof path, record.name, number), path_);
  uint32_t err = 0;
  char reason[512] = "";
  from_xml(handle, ORK_NO_INSTANCE, path, xml_.get(), target, &err, reason, sizeof reason);
  if (err == 0) return;
  if (err == ENOMEM)
    throw Failure(path_ + ": no memory for one more " + record.name + "; use less data");
  const std::string_view told = reason;
  const size_t at = told.find("(//");
  const std::string culprit(at != std::string_view::npos ? told.substr(at) : path);
  char value[64] = "";
  xml_get_element_value(xml_.get(), culprit.c_str(), value, sizeof value, 0);
  throw Failure(path_ + ":" + std::to_string(ork_xml_line(xml_.get(), culprit.c_str())) + ": <" +
                culprit.substr(culprit.rfind('/') + 1) + "> is \"" + value +
                "\": " + reason_of(err) + "; correct it");
}

}  // namespace wayfind
