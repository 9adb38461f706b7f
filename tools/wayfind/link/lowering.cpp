#include "tools/wayfind/link/lowering.h"

#include <set>
#include <utility>

namespace wayfind {
namespace {

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

std::string lowered(const wayfind_bundle& bundle, const ork_type_list& sender,
                    const ork_type_list& receiver) {
  Lowering lowering(sender, receiver);
  for (unsigned i = 0; i < bundle.member_count; ++i) lowering.message(*bundle.members[i].message);
  return lowering.text();
}

}  // namespace wayfind
