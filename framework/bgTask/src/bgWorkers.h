#pragma once

#include "resmgt/mtGroup.h"

#include <queue>

namespace Ko {

/// A group of workers of the manager. No class of its own: its threads run before a derived class would be constructed.
using BgWorkers = MtGroup<std::queue<MtTask>>;

} // namespace Ko
