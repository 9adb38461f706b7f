#include "frame/size.h"

namespace frame {

uint32_t size_of(const ork_handle* handle, const RecordRow& record) {
  const Layout& layout = record.newest_layout();
  const bool on = checked_mode<Function::size_of>(handle, record) == Tracking::on;
  return on ? uint32_t{layout.body} + layout.state : layout.body;
}

uint32_t size_of_internal(const ork_handle* handle, const void* object, uint32_t with_state,
                          uint32_t state_only, const RecordRow& record) {
  const Tracking mode = checked_mode<Function::size_of>(handle, record);
  const bool newest = object == nullptr || mode == Tracking::absent;
  const Layout& layout = newest ? record.newest_layout() : layout_of(record, object);
  if (mode != Tracking::on) return state_only != 0 ? 0 : layout.body;
  if (state_only != 0) return layout.state;
  return with_state != 0 ? uint32_t{layout.body} + layout.state : layout.body;
}

}  // namespace frame
