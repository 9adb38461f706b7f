// Takes the frames of one show to the dispatcher, until its bundle is committed and given on.
#pragma once

#include <exception>
#include <map>
#include <span>
#include <string>

#include "tools/common/owned.h"
#include "tools/wayfind/client/recorder.h"
#include "tools/wayfind/client/show_output.h"
#include "tools/wayfind/data/message_type.h"
#include "tools/wayfind/data/subject.h"

namespace wayfind {

class Receiver {
 public:
  Receiver(ork_handle* handle, const Subject& subject, ShowOutput& output, Recorder& recorder);

  // Anything but the frames of the show that was asked for is a Failure.
  void take(std::span<const uint8_t> frame);

  bool committed() const { return committed_; }

  // What is wrong with the show that was given on all the same; empty when nothing is.
  const std::string& objection() const { return objection_; }

 private:
  struct Known {
    std::string name;
    const MessageType* type;  // null for a control message
  };

  void add_message(const MessageType& type);
  void add_bundle(const wayfind_bundle& bundle);
  void add(const ork_dispatch_entry& entry, const Known& known);
  static void on_commit(ork_handle* handle, uint32_t instance, void* ctx, uint32_t* err);
  void give_bundle();
  void check_members();
  const wayfind_member& row_of(const MessageType& type) const;
  const MessageType& type_of(const ork_bundle_member& member) const;
  std::string described(std::span<const uint8_t> frame) const;

  ork_handle* handle_;
  const Subject& subject_;
  ShowOutput& output_;
  Recorder& recorder_;
  Dispatcher dispatcher_;
  std::map<std::string, Known> known_;  // by LUID
  size_t frames_ = 0;
  bool committed_ = false;
  std::string objection_;
  std::exception_ptr failure_;
};

}  // namespace wayfind
