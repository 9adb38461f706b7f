// XML to objects: what encoders/xml_write.h writes.
#pragma once

#include "encoders/walk.h"

namespace encoders {

// A parsed document, and a buffer for a text on what went wrong, which may be null.
struct Document {
  ork_xml* xml;
  char* err_text;
  uint32_t err_text_len;
};
// Fields that the document lacks stay as they are.
void from_xml(const Call& call, const char* path, const Document& document, void* object,
              const RecordRow& record);
void small_from_xml(const Call& call, const char* path, const Document& document, void* object,
                    const SmallRow& type);

}  // namespace encoders
