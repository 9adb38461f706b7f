#include "tools/offline/trace_file.h"

#include <algorithm>
#include <string_view>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

constexpr std::string_view file_head = "FLIGHT1\n";
constexpr uint32_t sync_word = 0x54464c46;

// Of a record: sync word, length of its body, kind, a zero byte, checksum of the body.
constexpr size_t head_size = 12;

// No body is longer: the longest is that of a traced file with its path.
constexpr size_t max_body = 2 + 1 + 255 + 4096;

uint32_t fnv1a(Bytes bytes) {
  uint32_t hash = 0x811c9dc5;
  for (const uint8_t byte : bytes) hash = (hash ^ byte) * 0x01000193;
  return hash;
}

// Takes numbers and texts off the front of a body; what is not there reads as 0 and is remembered.
class Reader {
 public:
  explicit Reader(Bytes body) : rest_(body) {}

  Bytes take(size_t size) {
    whole_ = whole_ && size <= rest_.size();
    if (!whole_) return {};
    const Bytes taken = rest_.first(size);
    rest_ = rest_.subspan(size);
    return taken;
  }

  template <class Number>
  Number number() {
    const Bytes bytes = take(sizeof(Number));
    uint64_t value = 0;
    for (size_t i = 0; i < bytes.size(); ++i) value |= static_cast<uint64_t>(bytes[i]) << (8 * i);
    return static_cast<Number>(value);
  }

  std::string text(size_t size) {
    const Bytes bytes = take(size);
    return {bytes.begin(), bytes.end()};
  }

  std::string remaining_text() { return text(rest_.size()); }

  Bytes rest() const { return rest_; }
  void fail() { whole_ = false; }
  bool whole() const { return whole_; }
  bool at_end() const { return whole_ && rest_.empty(); }

 private:
  Bytes rest_;
  bool whole_ = true;
};

TracedFile read_traced_file(Reader& reader) {
  TracedFile file;
  file.number = reader.number<uint16_t>();
  file.build_id = hex(reader.take(reader.number<uint8_t>()));
  file.path = reader.remaining_text();
  return file;
}

TracedModule read_module(Reader& reader) {
  TracedModule module;
  module.id = reader.number<uint16_t>();
  module.name = reader.remaining_text();
  return module;
}

TraceArgument read_argument(Reader& reader) {
  switch (reader.number<uint8_t>()) {
    case 1: return reader.text(reader.number<uint8_t>());
    case 4: return reader.number<uint32_t>();
    case 5: return TracePointer{reader.number<uint64_t>()};
    default: reader.fail(); return uint32_t{0};
  }
}

Trace read_trace(Reader& reader) {
  Trace trace{};
  trace.time = reader.number<uint64_t>();
  trace.thread = reader.number<uint32_t>();
  trace.file = reader.number<uint16_t>();
  trace.module = reader.number<uint16_t>();
  trace.level_word = reader.number<uint32_t>();
  trace.index = reader.number<uint32_t>();
  const Bytes id = reader.take(trace.section.size());
  std::copy(id.begin(), id.end(), trace.section.begin());
  const size_t arguments = reader.number<uint8_t>();
  for (size_t i = 0; i < arguments && reader.whole(); ++i)
    trace.arguments.push_back(read_argument(reader));
  return trace;
}

std::optional<TraceRecord> read_body(uint8_t kind, Bytes body) {
  Reader reader(body);
  TraceRecord record;
  switch (kind) {
    case 1: record = read_traced_file(reader); break;
    case 2: record = read_module(reader); break;
    case 3: record = read_trace(reader); break;
    default: return std::nullopt;
  }
  if (!reader.at_end()) return std::nullopt;
  return record;
}

// What stands in front, taken for a record. A body is right when its checksum is.
struct Claim {
  uint8_t kind;
  uint32_t checksum;
  Bytes body;
};

std::optional<Claim> read_head(Bytes bytes) {
  if (bytes.size() < head_size || u32_at(bytes, 0) != sync_word) return std::nullopt;
  const size_t length = u16_at(bytes, 4);
  if (length > max_body || length > bytes.size() - head_size || bytes[7] != 0) return std::nullopt;
  return Claim{bytes[6], u32_at(bytes, 8), bytes.subspan(head_size, length)};
}

}  // namespace

TraceFile::TraceFile(Bytes bytes, const std::string& name) {
  if (bytes.empty()) return;
  Reader head(bytes);
  const bool begins = head.text(file_head.size()) == file_head;
  const Bytes build_id = head.take(head.number<uint8_t>());
  if (!begins || !head.whole()) throw Failure(name + ": not a trace file");
  records_ = head.rest();
  if (!build_id.empty() || !records_.empty()) build_id_ = hex(build_id);
}

bool TraceFile::is_right(Bytes body, uint32_t checksum) {
  const auto passed = std::find_if(wrong_ends_.begin(), wrong_ends_.end(),
                                   [&](size_t end) { return end <= front_; });
  if (passed == wrong_ends_.end()) return false;
  if (fnv1a(body) == checksum) return true;
  *passed = front_ + head_size + body.size();
  return false;
}

bool TraceFile::ends_a_record(size_t place) const {
  const Bytes behind = records_.subspan(place);
  return behind.empty() || (behind.size() >= sizeof sync_word && u32_at(behind, 0) == sync_word);
}

std::optional<TraceRecord> TraceFile::next() {
  while (front_ < records_.size()) {
    size_t size = 1;
    std::optional<TraceRecord> record;
    if (const std::optional<Claim> claim = read_head(records_.subspan(front_))) {
      const size_t whole = head_size + claim->body.size();
      const bool right = is_right(claim->body, claim->checksum);
      if (right) record = read_body(claim->kind, claim->body);
      if (right || ends_a_record(front_ + whole)) size = whole;
    }
    front_ += size;
    if (record) {
      in_damage_ = false;
      return record;
    }
    // A stretch counts once, a record of which only the body is damaged for itself.
    if (size > 1 || !in_damage_) ++damaged_;
    in_damage_ = size == 1;
  }
  return std::nullopt;
}

}  // namespace wayfind
