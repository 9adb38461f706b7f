// What is measured: each operation of the library on filled records, beside a peer that does the
// same work in another way.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct Operation {
  std::string name;           // operation/record/who, who being library, bare, table or floor
  std::function<void()> run;  // once
};

// Operations share one handle without tracking and one set of records, which live as long as the
// process.
std::vector<Operation> operations();
