// Asks once, as it takes a moment, what the tables of all types must hold together.
#include "model/order_checks.h"

#include "model/order.h"

namespace model {

inline constexpr Tables tables{records, enums, flag_sets, messages, bundles};
static_assert(are_right<tables>());

}  // namespace model
