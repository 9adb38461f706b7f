// XML to objects: the counterpart of encoders/xml_write.h.
#pragma once

#include "encoders/walk.h"

namespace encoders {

// A parsed document, and a text buffer that may be null for what went wrong.
struct Document {
  ork_xml* xml;
  char* err_text;
  uint32_t err_text_len;
};
// What the document lacks stays as it is in the object.
void from_xml(const Call& call, const char* path, const Document& document, void* object,
              const RecordRow& record);
void small_from_xml(const Call& call, const char* path, const Document& document, void* object,
                    const SmallRow& type);

}  // namespace encoders
