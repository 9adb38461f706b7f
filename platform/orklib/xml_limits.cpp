#include "xml_limits.h"

#include <expat.h>

#include <array>
#include <cstring>
#include <memory>
#include <new>

namespace ork {
namespace {

struct ParserFreed {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserFreed>;

std::string more_than(size_t limit, const char* of_what) {
  return "more than " + std::to_string(limit) + " " + of_what;
}

// Adds up what comes by. What the handlers throw would have to go through C, so they stop the
// parser instead.
class Scan {
 public:
  explicit Scan(XML_Parser parser) : parser_(parser) {
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, on_start, on_end);
    XML_SetCharacterDataHandler(parser, on_text);
    XML_SetCommentHandler(parser, on_comment);
    XML_SetProcessingInstructionHandler(parser, on_instruction);
    XML_SetCdataSectionHandler(parser, on_cdata, on_cdata_end);
    XML_SetStartDoctypeDeclHandler(parser, on_document_type);
  }
  Scan(const Scan&) = delete;
  Scan& operator=(const Scan&) = delete;

  const char* excess() const { return excess_; }
  size_t limit() const { return limit_; }

  // The name of the innermost element that is still open in `text`, cut to what a message can use.
  std::string_view open_element(std::string_view text) const {
    if (depth_ == 0) {
      return {};
    }
    const std::string_view name = text.substr(opened_[depth_ - 1] + 1, longest_name);
    return name.substr(0, name.find_first_of(" \t\r\n/>"));
  }

 private:
  static constexpr size_t longest_name = 80;

  static Scan& self(void* context) { return *static_cast<Scan*>(context); }

  static void on_start(void* context, const XML_Char*, const XML_Char** attributes) {
    self(context).start(attributes);
  }
  static void on_end(void* context, const XML_Char*) {
    self(context).depth_ -= 1;
    self(context).text_ = 0;
  }
  static void on_text(void* context, const XML_Char*, int length) {
    Scan& scan = self(context);
    scan.text_ += static_cast<size_t>(length);
    scan.expect(scan.text_, xml_limit::text_bytes, "bytes in one text");
  }
  static void on_comment(void* context, const XML_Char* text) {
    self(context).aside(std::strlen(text), "bytes in one comment");
  }
  static void on_instruction(void* context, const XML_Char* target, const XML_Char* text) {
    self(context).aside(std::strlen(target) + std::strlen(text), "bytes in one instruction");
  }
  static void on_cdata(void* context) { self(context).add_parts(1); }
  static void on_cdata_end(void*) {}
  static void on_document_type(void* context, const XML_Char*, const XML_Char*, const XML_Char*,
                               int) {
    self(context).stop("a document type is not accepted", 0);
  }

  void start(const XML_Char** attributes) {
    const auto count = static_cast<size_t>(XML_GetSpecifiedAttributeCount(parser_)) / 2;
    const auto bytes = static_cast<size_t>(XML_GetCurrentByteCount(parser_));
    for (const XML_Char** name = attributes; *name != nullptr; name += 2) {
      namespaces_ += std::strncmp(*name, "xmlns", 5) == 0 ? 1 : 0;
    }
    if (depth_ < opened_.size()) {
      opened_[depth_] = static_cast<size_t>(XML_GetCurrentByteIndex(parser_));
    }
    depth_ += 1;
    text_ = 0;
    expect(bytes, xml_limit::tag_bytes, "bytes in one start tag");
    expect(count, xml_limit::attributes, "attributes in one element");
    expect(namespaces_, xml_limit::namespaces, "declarations of namespaces");
    expect(depth_, xml_limit::depth, "elements inside one another");
    add_parts(1 + count);
  }

  void aside(size_t bytes, const char* of_what) {
    text_ = 0;
    expect(bytes, xml_limit::text_bytes, of_what);
    add_parts(1);
  }

  void add_parts(size_t count) {
    parts_ += count;
    expect(parts_, xml_limit::parts, "elements, attributes and comments");
  }

  void expect(size_t number, size_t limit, const char* of_what) {
    if (number > limit) {
      stop(of_what, limit);
    }
  }

  void stop(const char* excess, size_t limit) {
    if (excess_ == nullptr) {
      excess_ = excess;
      limit_ = limit;
      XML_StopParser(parser_, XML_FALSE);
    }
  }

  XML_Parser parser_;
  const char* excess_ = nullptr;
  size_t limit_ = 0;  // that was passed; 0: what came is never accepted
  size_t depth_ = 0;
  std::array<size_t, xml_limit::depth> opened_{};  // where each open element's tag begins
  size_t parts_ = 0;
  size_t namespaces_ = 0;
  size_t text_ = 0;  // bytes since the last tag
};

// The parser takes what begins so for UTF-16, whatever it is told.
bool begins_as_utf16(std::string_view text) {
  const auto byte = [&](size_t i) {
    return i < text.size() ? static_cast<uint8_t>(text[i]) : uint8_t{' '};
  };
  return byte(0) >= 0xFE || byte(0) == 0 || byte(1) == 0;
}

}  // namespace

std::optional<XmlRefusal> refusal_of_size(size_t bytes) {
  if (bytes <= xml_limit::bytes) {
    return std::nullopt;
  }
  return XmlRefusal{1, more_than(xml_limit::bytes, "bytes")};
}

std::optional<XmlRefusal> refusal_of(std::string_view text) {
  if (begins_as_utf16(text)) {
    return XmlRefusal{1, "a document has to be in UTF-8"};
  }
  const Parser parser(XML_ParserCreate("UTF-8"));
  if (!parser) {
    throw std::bad_alloc();
  }
  const Scan scan(parser.get());
  if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE) ==
      XML_STATUS_OK) {
    return std::nullopt;
  }
  const XML_Error error = XML_GetErrorCode(parser.get());
  if (error == XML_ERROR_NO_MEMORY) {
    throw std::bad_alloc();
  }
  const uint64_t line = XML_GetCurrentLineNumber(parser.get());
  if (scan.excess() == nullptr) {
    std::string reason = XML_ErrorString(error);
    if (const std::string_view name = scan.open_element(text); !name.empty()) {
      reason += " inside <" + std::string(name) + ">";
    }
    return XmlRefusal{line, reason};
  }
  return XmlRefusal{line, scan.limit() != 0 ? more_than(scan.limit(), scan.excess())
                                            : std::string(scan.excess())};
}

}  // namespace ork
