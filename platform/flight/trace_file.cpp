#include "trace_file.h"

#include <algorithm>
#include <cstring>

#include "build_id.h"

namespace flight {
namespace {

constexpr uint32_t sync_word = 0x54464c46;
constexpr uint16_t no_file = 0xFFFF;

class Body {
public:
    template <typename Number>
    void number(Number value) {
        for (size_t i = 0; i < sizeof value; ++i) {
            bytes.push_back(static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i)));
        }
    }

    void append(const void *data, size_t length) {
        const auto *begin = static_cast<const uint8_t *>(data);
        bytes.insert(bytes.end(), begin, begin + length);
    }

    std::vector<uint8_t> bytes;
};

uint32_t fnv1a(const std::vector<uint8_t> &bytes) {
    uint32_t hash = 0x811c9dc5;
    for (const uint8_t byte : bytes) {
        hash = (hash ^ byte) * 0x01000193;
    }
    return hash;
}

}  // namespace

TraceFile::TraceFile(std::FILE *stream) : stream_(stream) {
    std::fwrite("FLIGHT1\n", 1, 8, stream_);
}

TraceFile::~TraceFile() {
    std::fclose(stream_);
}

void TraceFile::write_module(uint16_t id, const std::string &name) {
    Body body;
    body.number(id);
    body.append(name.data(), std::min<size_t>(name.size(), 1024));
    write_record(2, body.bytes);
}

void TraceFile::write_trace(const flight_trace &trace, const void *section, uint32_t thread) {
    const uint16_t file = traced_file_of(section);
    Body body;
    body.number(trace.time_ns);
    body.number(thread);
    body.number(file);
    body.number(trace.module_id);
    body.number(trace.level_word);
    body.number(trace.index);
    body.append(trace.section_id, sizeof trace.section_id);
    body.number(trace.n_arguments);
    for (size_t i = 0; i < trace.n_arguments; ++i) {
        body.number(trace.kind[i]);
        if (trace.kind[i] == 1) {
            const auto length = static_cast<uint8_t>(std::strlen(trace.text[i]));
            body.number(length);
            body.append(trace.text[i], length);
        } else if (trace.kind[i] == 4) {
            body.number(static_cast<uint32_t>(trace.number[i]));
        } else {
            body.number(trace.number[i]);
        }
    }
    write_record(3, body.bytes);
    // A fatal trace is followed by abort, which flushes nothing.
    std::fflush(stream_);
}

uint16_t TraceFile::traced_file_of(const void *section) {
    const LoadedFile file = loaded_file_at(section);
    if (file.base == nullptr) {
        return no_file;
    }
    const auto known = std::find(traced_files_.begin(), traced_files_.end(), file.base);
    const auto number = static_cast<uint16_t>(known - traced_files_.begin());
    if (known == traced_files_.end()) {
        traced_files_.push_back(file.base);
        Body body;
        body.number(number);
        body.number(static_cast<uint8_t>(file.build_id.size()));
        body.append(file.build_id.data(), static_cast<uint8_t>(file.build_id.size()));
        body.append(file.path.data(), std::min<size_t>(file.path.size(), 4096));
        write_record(1, body.bytes);
    }
    return number;
}

void TraceFile::write_record(uint8_t kind, const std::vector<uint8_t> &body) {
    Body head;
    head.number(sync_word);
    head.number(static_cast<uint16_t>(body.size()));
    head.number(kind);
    head.number(uint8_t{0});
    head.number(fnv1a(body));
    std::fwrite(head.bytes.data(), 1, head.bytes.size(), stream_);
    std::fwrite(body.data(), 1, body.size(), stream_);
}

}  // namespace flight
