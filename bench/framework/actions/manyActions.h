#pragma once

#include "base/oPtr.h"
#include "framework/actions/actAction.h"

namespace KoBench {

constexpr int actionCount = 10000;

/// One of `actionCount` actions. One of three is valid for nothing, one of ten is in a sub-menu; all are described
/// differently.
__attribute__((visibility("default"))) Ko::OPtr<Ko::ActAction> makeAction(int number);

} // namespace KoBench
