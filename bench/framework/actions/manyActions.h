#pragma once

#include "base/oPtr.h"
#include "framework/actions/actAction.h"

namespace KoBench {

constexpr int actionCount = 10000;

/// One of `actionCount` actions with different descriptions. One in three is never valid, one in ten is in a sub-menu.
__attribute__((visibility("default"))) Ko::OPtr<Ko::ActAction> makeAction(int number);

} // namespace KoBench
