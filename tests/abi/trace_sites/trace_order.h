// The order of the trace entries: which function's which text stands at which index of which
// section. Written from the order of the functions and of the texts within them, not from the
// library's own plan.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace trace_sites {

using Place = std::pair<unsigned, unsigned>;  // section, index

struct Entry {
  std::string function;
  std::string text;  // names filled in, conversions not, no blank in front
};

class TraceOrder {
 public:
  TraceOrder();

  // The nth entry of a function with that text, counted from 0. Throws when there is none.
  Place place(const std::string& function, const std::string& text, size_t nth) const;

  const std::map<Place, Entry>& entries() const { return entries_; }

 private:
  struct Writer;
  std::map<Place, Entry> entries_;
  std::map<std::pair<std::string, std::string>, std::vector<Place>> places_;
};

const TraceOrder& told_order();

}  // namespace trace_sites
