#include "xml_document.h"

#include <libxml/xpathInternals.h>

#include <algorithm>
#include <cerrno>
#include <charconv>

namespace {

bool is_name(std::string_view text) {
  if (text.empty()) {
    return false;
  }
  for (const char c : text) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    if (!letter && !(c >= '0' && c <= '9')) {
      return false;
    }
  }
  return !(text.front() >= '0' && text.front() <= '9');
}

std::string_view name_of(const xmlNode* node) { return reinterpret_cast<const char*>(node->name); }

bool is_element(const xmlNode* node) {
  return node->type == XML_ELEMENT_NODE && node->ns == nullptr;
}

// "name" or "name[n]"; index 0 stands for no index.
struct Step {
  std::string_view name;
  uint32_t index = 0;
};

bool parse_index(std::string_view text, uint32_t& index) {
  if (text.size() < 3 || text.front() != '[' || text.back() != ']') {
    return false;
  }
  const char* end = text.data() + text.size() - 1;
  const auto result = std::from_chars(text.data() + 1, end, index);
  return result.ec == std::errc() && result.ptr == end && index > 0;
}

bool parse_step(std::string_view text, Step& step) {
  const size_t bracket = std::min(text.find('['), text.size());
  step.name = text.substr(0, bracket);
  return is_name(step.name) &&
         (bracket == text.size() || parse_index(text.substr(bracket), step.index));
}

bool is_called(const xmlNode* node, std::string_view name) {
  return is_element(node) && name_of(node) == name;
}

// Goes on from the child found last where that is not behind the one sought: arrays are read from
// the front.
xmlNode* nth_child(ork::Place& place, const Step& step) {
  xmlNode* child = place.element->children;
  uint32_t index = 1;
  if (place.found != nullptr && place.index <= step.index && name_of(place.found) == step.name) {
    child = place.found;
    index = place.index;
  }
  for (; child != nullptr; child = child->next) {
    if (is_called(child, step.name) && index++ == step.index) {
      place.found = child;
      place.index = step.index;
      return child;
    }
  }
  return nullptr;
}

ork::Selection children(ork::Place& place, const Step& step) {
  ork::Selection selection;
  if (step.index != 0) {
    selection.first = nth_child(place, step);
    selection.count = selection.first != nullptr ? 1 : 0;
    return selection;
  }
  for (xmlNode* child = place.element->children; child != nullptr; child = child->next) {
    if (is_called(child, step.name) && selection.count++ == 0) {
      selection.first = child;
    }
  }
  return selection;
}

// The next element in document order behind node, within root.
xmlNode* next_in_document(xmlNode* node, const xmlNode* root) {
  if (node->type == XML_ELEMENT_NODE && node->children != nullptr) {
    return node->children;
  }
  while (node != root && node->next == nullptr) {
    node = node->parent;
  }
  return node == root ? nullptr : node->next;
}

}  // namespace

ork_xml::ork_xml(xmlDoc* document) : document_(document), context_(xmlXPathNewContext(document)) {
  if (!context_) {
    throw std::bad_alloc();
  }
  // A path that is none is an error number here, not a line on the process's stderr.
  context_->error = [](void*, xmlError*) {};
  context_->opLimit = 10'000'000;
  index_elements();
}

ork::Selection ork_xml::select(std::string_view path) {
  ork::Selection selection;
  return walk(path, selection) ? selection : evaluate(path);
}

// False: not a path of the plain kind, or one that goes through several elements at once.
bool ork_xml::walk(std::string_view path, ork::Selection& selection) {
  const auto begins = [&](const ork::Place& place) {
    return path.starts_with(place.path) &&
           (path.size() == place.path.size() || path[place.path.size()] == '/');
  };
  while (!trail_.empty() && !begins(trail_.back())) {
    trail_.pop_back();
  }
  size_t behind = 0;
  if (!trail_.empty()) {
    behind = trail_.back().path.size();
    selection = {0, 1, trail_.back().element};
  } else if (!begin(path, behind, selection)) {
    return false;
  }
  while (behind < path.size()) {
    const size_t end = std::min(path.find('/', behind + 1), path.size());
    Step step;
    if (!parse_step(path.substr(behind + 1, end - behind - 1), step)) {
      return false;
    }
    if (selection.count > 1) {
      return false;
    }
    if (selection.count == 1) {  // and the trail ends with it
      selection = children(trail_.back(), step);
    }
    behind = end;
    if (selection.count == 1 && behind < path.size()) {
      trail_.push_back({std::string(path.substr(0, behind)), selection.first});
    }
  }
  return true;
}

bool ork_xml::begin(std::string_view path, size_t& behind, ork::Selection& selection) {
  const bool numbered = path.starts_with("(//");
  if (!numbered && !path.starts_with("//")) {
    return false;
  }
  Step step;
  const size_t from = numbered ? 3 : 2;
  behind = std::min(path.find('/', from), path.size());
  std::string_view text = path.substr(from, behind - from);
  if (numbered) {
    const size_t close = text.find(')');
    if (close == std::string_view::npos || !parse_index(text.substr(close + 1), step.index)) {
      return false;
    }
    text = text.substr(0, close);
  }
  if (!is_name(text)) {
    return false;
  }
  const auto found = by_name_.find(text);
  const size_t present = found != by_name_.end() ? found->second.size() : 0;
  if (!numbered && present > 0) {
    selection = {0, static_cast<uint32_t>(present), found->second.front()};
  } else if (numbered && step.index <= present) {
    selection = {0, 1, found->second[step.index - 1]};
  }
  if (selection.count == 1) {
    trail_.push_back({std::string(path.substr(0, behind)), selection.first});
  }
  return true;
}

ork::Selection ork_xml::evaluate(std::string_view path) {
  const std::string text(path);
  const std::unique_ptr<xmlXPathObject, Freed> object(
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(text.c_str()), context_.get()));
  if (!object || object->type != XPATH_NODESET) {
    return {EINVAL, 0, nullptr};
  }
  const xmlNodeSet* nodes = object->nodesetval;
  if (nodes == nullptr || nodes->nodeNr == 0) {
    return {};
  }
  if (nodes->nodeTab[0]->type == XML_NAMESPACE_DECL) {
    return {EINVAL, 0, nullptr};  // these are the result's and go with it
  }
  return {0, static_cast<uint32_t>(nodes->nodeNr), nodes->nodeTab[0]};
}

void ork_xml::index_elements() {
  xmlNode* const top = root();
  for (xmlNode* node = top; node != nullptr; node = next_in_document(node, top)) {
    if (is_element(node)) {
      by_name_[std::string(name_of(node))].push_back(node);
    }
  }
}
