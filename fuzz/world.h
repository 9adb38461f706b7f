// What the targets share: an input read byte by byte, a handle whose leaks and wild stores end the
// process, exact buffers.
#pragma once

#include <memory>

#include "fuzz/target.h"
#include "ork/orklib.h"
#include "ork/platform.h"
#include "tests/support/sample.h"
#include "tools/schema/wayfind_schema.h"

namespace fuzz {

constexpr uint32_t instance = 1;

// Ends the process with a line that names what does not hold.
void require(bool holds, const char* what);

class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  // 0 behind the end.
  uint8_t byte() { return size_ == 0 ? uint8_t{0} : (--size_, *data_++); }
  // Takes the rest.
  const uint8_t* rest() const { return data_; }
  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

 private:
  const uint8_t* data_;
  size_t size_;
};

// A handle with a budget of 1 MiB. Whatever was allocated from it has to be back when it goes.
class World {
 public:
  // bits: 0 and 1 the state tracking, 2 an allocation that fails, 3 a peer that knows only first
  // variants. nth: which allocation, counted from 1.
  World(uint8_t bits, uint8_t nth);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  ork_handle* handle() const { return handle_; }
  uint32_t err = 0;

 private:
  ork_handle* handle_;
};

// A copy with nothing readable behind it but the one byte that a flag set's image is read without a
// test of its length.
class Exact {
 public:
  Exact(const uint8_t* bytes, size_t size);
  const uint8_t* bytes() const { return copy_.get(); }
  int32_t size() const { return size_; }

 private:
  std::unique_ptr<uint8_t[]> copy_;
  int32_t size_;
};

// Every form of a record that can be made without changing it: no output may depend on more than
// the record, nor leave its buffer.
void render(World& world, const wayfind_record& type, void* object);

// Makes a record's variant, and that of the records and elements inside it, what its storage was
// laid out for. An image can lower a filled record, and a document fills fields beyond the variant:
// destroy visits neither, so who reads into a record like that raises it before giving it back.
void raise(const wayfind_record& type, void* object);

// A look-up table of all messages and control messages of the library, made once.
const ork_dispatcher* dispatcher();

}  // namespace fuzz
