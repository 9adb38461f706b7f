#include "ork/orklib.h"
#include "support/export.h"

extern "C" {

// Ready before any module's constructor runs.
ORK_EXPORT constinit ork_module_root ork_module_tot_root{0, 0, nullptr, &ork_module_tot_root.head};

}  // extern "C"
