// A parsed document and the finding of nodes by path.
#pragma once

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ork/wire.h"

namespace ork {

// What a path leads to: the first node and how many there are.
struct Selection {
  uint32_t status = 0;  // 0, or 22 for a path that is none
  uint32_t count = 0;
  xmlNode* first = nullptr;
};

// An element that a path selects alone, and the child that "name[n]" found last in it.
struct Place {
  std::string path;
  xmlNode* element = nullptr;
  xmlNode* found = nullptr;
  uint32_t index = 0;  // of found among the children of its name
};

}  // namespace ork

// Records are read field by field, each by its full path, and arrays element by element. Paths of
// the plain kind, "//name" or "(//name)[n]" followed by steps "name" or "name[n]", are walked here
// from the deepest element that the last path went through, and "name[n]" from the child found
// last; any other goes to XPath. Both give the same nodes.
struct ork_xml {
  explicit ork_xml(xmlDoc* document);
  ork_xml(const ork_xml&) = delete;
  ork_xml& operator=(const ork_xml&) = delete;

  ork::Selection select(std::string_view path);
  xmlNode* root() const { return xmlDocGetRootElement(document_.get()); }

 private:
  struct Freed {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
    void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
  };

  bool walk(std::string_view path, ork::Selection& selection);
  bool begin(std::string_view path, size_t& behind, ork::Selection& selection);
  ork::Selection evaluate(std::string_view path);
  void index_elements();

  std::unique_ptr<xmlDoc, Freed> document_;
  std::unique_ptr<xmlXPathContext, Freed> context_;
  std::map<std::string, std::vector<xmlNode*>, std::less<>> by_name_;  // in document order
  std::vector<ork::Place> trail_;  // each path a beginning of the next
};
