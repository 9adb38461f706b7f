// Shows on stdout, as the user wants to see them.
#pragma once

#include <functional>
#include <string>

#include "tools/look/selection.h"
#include "tools/look/sheet.h"
#include "tools/wayfind/client/look_options.h"
#include "tools/wayfind/client/show_output.h"

namespace wayfind {

class ShowPrinter : public ShowOutput {
 public:
  // Throws a look::Mistake when the wishes mean nothing for the bundle.
  ShowPrinter(ork_handle* handle, const wayfind_bundle& bundle, const LookOptions& options);

  void put(const std::string& bundle, const std::vector<look::Message>& shown) override;

 private:
  void put_library_form(const std::string& bundle, const std::vector<look::Message>& selected);
  void put_json(const std::vector<look::Message>& selected);
  void put_sheets(const std::vector<look::Message>& selected);

  ork_handle* handle_;
  const LookOptions& options_;
  look::Selection selection_;
  look::Sheets sheets_;
};

// The sheets of the chosen columns. Throws a look::Mistake that names the option.
look::Sheets chosen_sheets(const wayfind_bundle& bundle, const std::string& columns);

}  // namespace wayfind
