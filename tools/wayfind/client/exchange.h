// One question to an agent, and its answer.
#pragma once

#include <string>

#include "tools/wayfind/client/show_output.h"
#include "tools/wayfind/data/subject.h"
#include "tools/wayfind/link/session.h"

namespace CLI {
class App;
}

namespace wayfind {

// Where an agent is, and how long it may be silent.
struct AgentPlace {
  std::string path;
  unsigned patience = 30;

  // --connect
  void add_to(CLI::App& command);
};

// A client with its release.
class Client {
 public:
  // The session has begun and outlives the client.
  Client(const AgentPlace& place, const Session& session);

  ork_handle* handle() const { return handle_.get(); }

  // Gives the whole show to the output, and records it in the file unless that is empty. Throws a
  // Failure when something is wrong with it, also with what has been given on. What the releases
  // make of the show is told the first time.
  void ask(const Subject& subject, ShowOutput& output, const std::string& recording = "");

 private:
  void tell_lowering(const Subject& subject, const ork_type_list& agents);

  const AgentPlace& place_;
  Handle handle_;
  TypeList own_;
  bool has_told_ = false;
};

// Names a subject of the command: a required argument that is checked, and the list of subjects.
void add_subject_to(CLI::App& command, std::string& subject);

}  // namespace wayfind
