#pragma once

#include "plugIns/plugIn.h"

namespace compositor {

/// The operator of a plug-in, for pictures that are in no document. May be called on any thread.
/// @param input the description of its action, and the arguments. @throws InputError if there is none, or for a wrong number of
///   arguments.
[[nodiscard]] Operator operatorOf(Statement const& input);

/// The operator of that description; null if there is none.
[[nodiscard]] Operator findOperator(std::string const& description);

} // namespace compositor
