#include "release.h"

#include <set>
#include <utility>

#include "failure.h"

namespace wayfind {
namespace {

TypeList checked(ork_type_list* list, uint32_t err, const std::string& origin, const char* reason) {
  TypeList owned(list);
  if (err != 0) throw Failure(origin + ": " + (*reason != 0 ? reason : words_for(err)));
  return owned;
}

// Collects in words what a release does to each type of a show, each type once.
class Lowering {
 public:
  Lowering(const ork_type_list& sender, const ork_type_list& receiver)
      : sender_(sender), receiver_(receiver) {}

  void message(const wayfind_message& message) {
    const auto [sent, taken] = variants(message.luid);
    if (taken < sent) add(std::string(message.name) + " left out");
    if (taken == 0 || sent == 0) return;
    for (unsigned slot = 0; slot < message.record_count; ++slot) record(*message.records[slot]);
  }

  const std::string& text() const { return text_; }

 private:
  void record(const wayfind_record& record) {
    if (!seen_.insert(&record).second) return;
    const auto [sent, taken] = variants(record.type->luid);
    if (taken == 0 && sent != 0) {
      add(std::string(record.name) + " without fields");
    } else if (taken < sent) {
      add(std::string(record.name) + " from variant " + std::to_string(sent - 1) + " to " +
          std::to_string(taken - 1));
    }
    for (unsigned i = 0; i < record.field_count; ++i) {
      if (record.fields[i].record != nullptr) this->record(*record.fields[i].record);
    }
  }

  // How many variants the sender and the receiver know.
  std::pair<uint32_t, uint32_t> variants(const uint8_t* luid) const {
    return {ork_type_list_variants(&sender_, luid), ork_type_list_variants(&receiver_, luid)};
  }

  void add(const std::string& words) { text_ += (text_.empty() ? "" : ", ") + words; }

  const ork_type_list& sender_;
  const ork_type_list& receiver_;
  std::set<const wayfind_record*> seen_;
  std::string text_;
};

}  // namespace

TypeList newest_release() {
  uint32_t err = 0;
  ork_type_list* list = ork_type_list_from_modules(&err);
  return checked(list, err, "types of this release", "");
}

TypeList read_release(const std::string& path) {
  uint32_t err = 0;
  char reason[256] = "";
  ork_type_list* list = ork_type_list_read(path.c_str(), &err, reason, sizeof reason);
  return checked(list, err, path, reason);
}

TypeList parse_release(const std::string& text, const std::string& origin) {
  uint32_t err = 0;
  char reason[256] = "";
  ork_type_list* list = ork_type_list_parse(text.data(), text.size(), &err, reason, sizeof reason);
  return checked(list, err, origin, reason);
}

std::string text_of(const ork_type_list& list) {
  std::string text(ork_type_list_text(&list, nullptr, 0), '\0');
  ork_type_list_text(&list, text.data(), text.size() + 1);
  return text;
}

std::string lowered(const wayfind_bundle& bundle, const ork_type_list& sender,
                    const ork_type_list& receiver) {
  Lowering lowering(sender, receiver);
  for (unsigned i = 0; i < bundle.member_count; ++i) lowering.message(*bundle.members[i].message);
  return lowering.text();
}

}  // namespace wayfind
