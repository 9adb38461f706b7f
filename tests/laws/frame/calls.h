// Every accessor of a field as a call with arguments that fit.
#pragma once

#include "laws/frame/fields.h"

namespace frame {

struct FieldCall {
  std::string suffix;
  std::vector<uint64_t> words;
  bool cr = false; /* uses the handle's slot */
};

// Where getters write to.
struct Outputs {
  alignas(8) uint8_t bytes[128] = {};
};

// All accessors of f on obj. index is for arrays; a set at or behind the count grows. With tracking
// off the state accessors only refuse.
inline std::vector<FieldCall> accessors(const Field& f, SpiedHandle& h, void* obj,
                                        const Source& src, uint64_t index, Outputs& out) {
  const uint64_t o = word(obj);
  const uint64_t s = src.word();
  const uint64_t e = word(&h.err);
  const uint64_t to = word(out.bytes);
  const std::vector<uint64_t> begin = {word(h), instance, o};
  std::vector<FieldCall> calls;
  const auto plain = [&](const char* suffix, std::vector<uint64_t> arguments) {
    std::vector<uint64_t> words = begin;
    words.insert(words.end(), arguments.begin(), arguments.end());
    words.push_back(e);
    calls.push_back({suffix, words});
  };
  const auto cr = [&](const char* suffix, std::vector<uint64_t> arguments) {
    std::vector<uint64_t> words = {word(h), o};
    words.insert(words.end(), arguments.begin(), arguments.end());
    calls.push_back({suffix, words, true});
  };
  switch (f.told.cls) {
    case Class::value:
      plain("_get", {});
      plain("_get_value", {});
      plain("_set", {s});
      plain("_set_value", {1});
      plain("_state_flag_get", {});
      plain("_state_flag_set", {3});
      break;
    case Class::object:
      plain("_get", {});
      plain("_set", {s});
      plain("_state_flag_get", {});
      plain("_state_flag_set", {3});
      break;
    case Class::text:
      plain("_get", {to, sizeof out.bytes});
      plain("_set", {s, 3});
      cr("_set_cr", {s, 4});
      plain("_state_flag_get", {});
      plain("_state_flag_set", {3});
      break;
    case Class::counter:
      plain("_get", {});
      plain("_get_value", {});
      break;
    case Class::value_array:
      plain("_get", {index});
      plain("_get_value", {index});
      plain("_get_mem", {to, 1});
      plain("_set", {index, s});
      cr("_set_cr", {index, 5});
      plain("_set_value", {index, 6});
      plain("_set_mem", {s, 3});
      cr("_set_mem_cr", {s, 4});
      break;
    case Class::record_array:
      plain("_get", {index});
      plain("_set", {index, s});
      cr("_set_cr", {index, s, 1});
      cr("_set_cr", {index, s, 0});
      break;
  }
  if (f.is_array()) {
    plain("_state_flag_whole_get", {});
    plain("_state_flag_whole_set", {3});
    plain("_state_flag_get_arr", {to});
    plain("_state_flag_set_arr", {s, 2});
    plain("_state_flag_get", {0});
    plain("_state_flag_set", {0, 3});
  }
  return calls;
}

}  // namespace frame
