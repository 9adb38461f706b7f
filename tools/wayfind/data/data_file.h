// One XML file of records in the library's own form: <fwe_cl_wayfind_hop_chan_data> and its fields,
// any number of them and of any kind, inside one element.
#pragma once

#include <string>

#include "tools/common/owned.h"
#include "tools/common/progress.h"
#include "tools/wayfind/data/message_list.h"

namespace wayfind {

class DataFile {
 public:
  // Reads and checks the file. What is wrong with it is a Failure with path, line and reason.
  explicit DataFile(const std::string& path);

  // Appends a message for each of the file's records that such messages carry. A message of two
  // records takes the first of one kind with the first of the other, the second with the second,
  // and so on.
  void read(const MessageType& type, ork_handle* handle, MessageList& messages,
            Progress& progress) const;

 private:
  uint32_t count(const wayfind_record& record) const;
  void read_record(const wayfind_record& record, uint32_t number, ork_handle* handle,
                   void* target) const;

  std::string path_;
  Xml xml_;
};

}  // namespace wayfind
