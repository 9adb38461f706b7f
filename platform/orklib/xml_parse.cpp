// From text to a document. The text is hostile until it has come through here.
#include <libxml/SAX2.h>
#include <libxml/parser.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "guard.h"
#include "ork/platform.h"
#include "support/export.h"
#include "xml_document.h"
#include "xml_limits.h"

namespace ork {
namespace {

constexpr std::string_view out_of_range = " value out of range/>";

bool is_name_character(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// An enum value out of range is written as "<name value out of range/>", which is no XML. Blanks in
// place of the words make it the empty element that it means to be, and keep every line where it
// was.
void mend_values_out_of_range(std::string& text) {
  for (size_t at = text.find(out_of_range); at != std::string::npos;
       at = text.find(out_of_range, at + 1)) {
    size_t name = at;
    while (name > 0 && is_name_character(text[name - 1])) {
      --name;
    }
    if (name < at && name > 0 && text[name - 1] == '<') {
      text.replace(at, out_of_range.size() - 2, out_of_range.size() - 2, ' ');
    }
  }
}

// The first error: the ones behind it are its consequences.
struct Attempt {
  std::optional<XmlRefusal> error;
};

void keep_first_error(void* context, xmlError* error) {
  auto& attempt = *static_cast<Attempt*>(static_cast<xmlParserCtxt*>(context)->_private);
  if (attempt.error || error->message == nullptr) {
    return;
  }
  const std::string_view message = error->message;
  attempt.error = {static_cast<uint64_t>(error->line),
                   std::string(message.substr(0, message.find('\n')))};
}

// The parser stands at the end of a start tag, and no "<" can stand in one but its own.
uintptr_t line_where_tag_begins(const xmlParserInput& input) {
  auto line = static_cast<uintptr_t>(input.line);
  for (const xmlChar* at = input.cur; at != input.base && *at != '<'; --at) {
    line -= *at == '\n' ? 1 : 0;
  }
  return line;
}

// libxml2 itself keeps 16 bits of an element's line, and the line where its start tag ends. The
// true one is noted here.
void start_element(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* space,
                   int spaces, const xmlChar** all_spaces, int attributes, int defaulted,
                   const xmlChar** all_attributes) {
  const auto* parser = static_cast<const xmlParserCtxt*>(context);
  xmlSAX2StartElementNs(context, name, prefix, space, spaces, all_spaces, attributes, defaulted,
                        all_attributes);
  if (parser->node != nullptr) {
    parser->node->_private = reinterpret_cast<void*>(line_where_tag_begins(*parser->input));
  }
}

// Of the start tag of the element that the node is or stands in; 0 for the document itself.
uint32_t line_of(const xmlNode* node) {
  while (node != nullptr && node->type != XML_ELEMENT_NODE) {
    node = node->parent;
  }
  return node != nullptr ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(node->_private)) : 0;
}

ork_xml* refuse(const XmlRefusal& refusal, uint32_t* err, char* err_text, uint32_t err_text_len) {
  *err = EINVAL;
  if (err_text != nullptr) {
    std::snprintf(err_text, err_text_len, "line %" PRIu64 ": %s", refusal.line,
                  refusal.reason.c_str());
  }
  return nullptr;
}

// The scan has seen to it that what the parser builds is bounded, so the parser's own limits are off:
// one of them depends on how the last tag lies in the text. The scan goes by UTF-8, so the parser
// must not go by what the text says of itself.
constexpr int parser_options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                               XML_PARSE_IGNORE_ENC | XML_PARSE_HUGE;

ork_xml* parse(std::string_view original, uint32_t* err, char* err_text, uint32_t err_text_len) {
  static std::once_flag once;
  std::call_once(once, xmlInitParser);
  if (const auto refusal = refusal_of_size(original.size())) {
    return refuse(*refusal, err, err_text, err_text_len);
  }
  std::string text(original);
  mend_values_out_of_range(text);
  if (const auto refusal = refusal_of(text)) {
    return refuse(*refusal, err, err_text, err_text_len);
  }
  const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(xmlNewParserCtxt(),
                                                                            xmlFreeParserCtxt);
  if (!parser) {
    throw std::bad_alloc();
  }
  Attempt attempt;
  parser->_private = &attempt;
  parser->sax->startElementNs = start_element;
  parser->sax->serror = keep_first_error;
  xmlDoc* document = xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()),
                                       nullptr, "UTF-8", parser_options);
  if (document == nullptr) {
    return refuse(attempt.error.value_or(XmlRefusal{0, "no document"}), err, err_text,
                  err_text_len);
  }
  return new ork_xml(document);
}

const char* chars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

const char* text_in(const xmlNode* element) {
  for (const xmlNode* node = element->children; node != nullptr; node = node->next) {
    const bool is_text = node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
    if (is_text && xmlIsBlankNode(node) == 0) {
      return chars(node->content);
    }
  }
  return nullptr;
}

const char* foreign_attribute_of(const xmlNode* element) {
  for (const xmlAttr* attribute = element->properties; attribute != nullptr;
       attribute = attribute->next) {
    const std::string_view name = chars(attribute->name);
    if (name != "state" && name != "time") {
      return chars(attribute->name);
    }
  }
  return nullptr;
}

uint32_t each(const xmlNode* first, uint32_t depth, const char* parent,
              uint32_t (*visit)(void* ctx, const ork_xml_element* element), void* ctx) {
  for (const xmlNode* node = first; node != nullptr; node = node->next) {
    if (node->type != XML_ELEMENT_NODE) {
      continue;
    }
    const ork_xml_element element{depth,
                                  line_of(node),
                                  chars(node->name),
                                  parent,
                                  node->ns != nullptr ? chars(node->ns->href) : nullptr,
                                  text_in(node),
                                  foreign_attribute_of(node)};
    uint32_t stop = visit(ctx, &element);
    if (stop == 0) {
      stop = each(node->children, depth + 1, element.name, visit, ctx);
    }
    if (stop != 0) {
      return stop;
    }
  }
  return 0;
}

}  // namespace
}  // namespace ork

extern "C" {

ORK_EXPORT struct ork_xml* ork_xml_parse(const char* text, size_t length, uint32_t* err,
                                         char* err_text, uint32_t err_text_len) {
  return ork::guarded(err, [&] { return ork::parse({text, length}, err, err_text, err_text_len); });
}

ORK_EXPORT void ork_xml_free(struct ork_xml* xml) { delete xml; }

ORK_EXPORT uint32_t ork_xml_nth_path(char* path, uint32_t size, const char* name, uint32_t n) {
  const int length = std::snprintf(path, size, "(//%s)[%u]", name, n);
  return length >= 0 && static_cast<uint32_t>(length) < size ? 0 : EMSGSIZE;
}

ORK_EXPORT uint32_t ork_xml_line(struct ork_xml* xml, const char* path) {
  uint32_t err = 0;
  return ork::guarded(&err, [&]() -> uint32_t {
    const ork::Selection selection = xml->select(path);
    return selection.count != 0 ? ork::line_of(selection.first) : 0;
  });
}

ORK_EXPORT uint32_t ork_xml_each(struct ork_xml* xml,
                                 uint32_t (*visit)(void* ctx,
                                                   const struct ork_xml_element* element),
                                 void* ctx) {
  return ork::each(xml->root(), 0, nullptr, visit, ctx);
}

ORK_EXPORT size_t ork_xml_document_length(const char* text, size_t length) {
  const std::string_view all(text, length);
  const size_t open = all.find('<');
  if (open == std::string_view::npos) {
    return 0;
  }
  const size_t end = std::min(all.find_first_of(" \t\r\n/>", open + 1), all.size());
  uint32_t err = 0;
  return ork::guarded(&err, [&]() -> size_t {
    const std::string closing = "</" + std::string(all.substr(open + 1, end - open - 1)) + ">";
    const size_t at = all.find(closing, end);
    if (at == std::string_view::npos) {
      return 0;
    }
    const size_t behind = at + closing.size();
    return behind < all.size() && all[behind] == '\n' ? behind + 1 : behind;
  });
}

}  // extern "C"
