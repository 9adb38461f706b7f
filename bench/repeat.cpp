// Runs one operation a number of times, for a tool that counts: repeat NAME TIMES. Without
// arguments it lists the names.
#include <cstdio>
#include <cstdlib>

#include "bench/operations.h"

int main(int argc, char** argv) {
  for (const Operation& operation : operations()) {
    if (argc < 3) std::puts(operation.name.c_str());
    if (argc < 3 || operation.name != argv[1]) continue;
    for (long left = std::atol(argv[2]); left > 0; --left) operation.run();
    return 0;
  }
  return argc < 3 ? 0 : 1;
}
