// What two processes say to each other around the frames.
//
// Each end first announces its release: a line "wayfind 1 LENGTH" and LENGTH bytes of the
// platform's type list. Then the client asks with lines "show SUBJECT", and the agent answers each
// with a line "ok" and the frames of one bundle, or with a line "error REASON".
//
// Whoever takes too long for his part is let go: docs/reliability.md has the deadlines.
//
// Requests are lines because no message of the library asks for anything: a frame would need an
// identifier that is nobody's to invent. A line can be read in a dump and typed by hand, and a peer
// of another kind is found out at its first line.
#pragma once

#include <cstddef>
#include <string>

#include "ork/platform.h"

namespace wayfind {

inline constexpr size_t longest_line = 512;
inline constexpr size_t longest_announcement = size_t{1} << 20;

std::string announcement_text(const ork_type_list& list);

// The length that the first line of an announcement tells. A line that is none is a Failure.
size_t announced_length(const std::string& line);

std::string request(const std::string& subject);

// The subject that a line asks for. A line that asks for nothing is a Failure.
std::string requested_subject(const std::string& line);

std::string acceptance();
std::string refusal(const std::string& reason);

// Ends with a Failure that tells the agent's reason unless the line accepts.
void expect_acceptance(const std::string& line);

}  // namespace wayfind
