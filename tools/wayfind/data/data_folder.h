// What an agent answers from: the messages of a folder's files, by kind.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "tools/wayfind/data/data_file.h"
#include "tools/wayfind/data/message_list.h"

namespace wayfind {

class DataFolder {
 public:
  // The handle must outlive the folder and every list of it.
  explicit DataFolder(ork_handle* handle);

  // Reads every file of the folder whose name ends in .xml, in the order of the names.
  void read(const std::string& path);

  // A reader keeps the list that it began with, whatever is replaced meanwhile.
  std::shared_ptr<const MessageList> messages(const wayfind_message& message) const {
    return lists_.at(&message);
  }
  void replace(const wayfind_message& message, std::shared_ptr<MessageList> list) {
    lists_[&message] = std::move(list);
  }

  ork_handle* handle() const { return handle_; }

 private:
  void add(const std::string& path, Progress& progress);

  ork_handle* handle_;
  std::map<const wayfind_message*, std::shared_ptr<MessageList>> lists_;
};

}  // namespace wayfind
