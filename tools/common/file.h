// Files that the command reads whole.
#pragma once

#include <cstddef>
#include <string>

namespace wayfind {

// Limits of size, by what a file holds.
inline constexpr size_t largest_release = size_t{1} << 20;
inline constexpr size_t largest_data = size_t{256} << 20;
inline constexpr size_t largest_input = size_t{1} << 30;  // recordings, libraries, traces

// The whole of a file. Anything but a regular file is a Failure, as a pipe might never end and a
// device might do something; so is one that holds more than largest bytes.
std::string read_file(const std::string& path, size_t largest);

// The same, but "-" is standard input, whatever that is.
std::string read_file_or_input(const std::string& path, size_t largest);

}  // namespace wayfind
