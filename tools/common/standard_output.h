// Standard output as a file that may fail like any other.
#pragma once

#include <string_view>

namespace wayfind {

// To be called before anything is opened. A reader that goes, and a file that grows past the limit
// of the process, leave an error behind instead of ending the process, and what is opened later
// never takes the place of a descriptor that was closed from the start.
void prepare_output();

// Fails when the text cannot be written.
void write_out(std::string_view text);

// Fails when not all of the output was written.
void expect_written();

}  // namespace wayfind
