#include "tools/wayfind/data/data_folder.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

std::vector<std::string> data_files(const std::string& folder) {
  std::error_code error;
  std::vector<std::string> paths;
  for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end;
       at.increment(error)) {
    if (at->path().extension() == ".xml") paths.push_back(at->path());
  }
  if (error) throw Failure(folder + ": " + error.message() + "; name a folder of XML files");
  if (paths.empty()) throw Failure(folder + ": no file in it ends in .xml; put records there");
  std::sort(paths.begin(), paths.end());
  return paths;
}

// A message that every bundle carries once at most.
bool stands_once(const wayfind_message& message) {
  bool repeatable = false;
  for (unsigned i = 0; i < wayfind_bundle_count; ++i) {
    for (unsigned k = 0; k < wayfind_bundles[i].member_count; ++k) {
      const wayfind_member& member = wayfind_bundles[i].members[k];
      repeatable |= member.message == &message && member.repeatable != 0;
    }
  }
  return !repeatable;
}

}  // namespace

DataFolder::DataFolder(ork_handle* handle) : handle_(handle) {
  for (unsigned i = 0; i < wayfind_message_count; ++i) {
    lists_[&wayfind_messages[i]] =
        std::make_shared<MessageList>(handle, message_type(wayfind_messages[i]));
  }
}

void DataFolder::read(const std::string& path) {
  Progress progress(path + ": records read");
  for (const std::string& file : data_files(path)) add(file, progress);
}

void DataFolder::add(const std::string& path, Progress& progress) {
  const DataFile file(path);
  for (auto& [message, list] : lists_) {
    file.read(message_type(*message), handle_, *list, progress);
    if (list->size() > 1 && stands_once(*message)) {
      throw Failure(path + ": one more <" + message->records[0]->name +
                    ">, of which a show holds one; remove it here or in a file before");
    }
  }
}

}  // namespace wayfind
