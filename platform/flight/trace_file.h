// The file that traces go to.
//
// All numbers little-endian. The file begins with the 8 bytes "FLIGHT1\n". Records follow, each with its own head of 12
// bytes: the sync word 0x54464c46, the length of what follows the head (u16), the kind (u8), a zero byte, and a
// checksum of the body (FNV-1a, u32). A reader that meets a bad head or checksum looks for the next sync word.
//
// Kind 1, a traced file, written before its first trace: its number (u16), the length of its build id (u8), the build
// id, the rest is its path. Kind 2, a module: its id (u16), the rest is its name. Kind 3, a trace: time in nanoseconds
// since the epoch (u64), thread (u32), number of the traced file (u16), module id (u16), level word (u32), index (u32),
// the 16 bytes of the section's id, the number of arguments (u8), and for each its kind (u8) and either a u32 (4), a
// u64 (5), or a length (u8) and that many bytes (1).
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "ork/platform.h"

namespace flight {

class TraceFile {
public:
    explicit TraceFile(std::FILE *stream);
    ~TraceFile();
    TraceFile(const TraceFile &) = delete;
    TraceFile &operator=(const TraceFile &) = delete;

    void write_module(uint16_t id, const std::string &name);

    // section is the address that the trace was raised with; it tells which loaded file the texts belong to.
    void write_trace(const flight_trace &trace, const void *section, uint32_t thread);

private:
    uint16_t traced_file_of(const void *section);
    void write_record(uint8_t kind, const std::vector<uint8_t> &body);

    std::FILE *stream_;
    std::vector<const void *> traced_files_;  // load addresses; the index is the file's number
};

}  // namespace flight
