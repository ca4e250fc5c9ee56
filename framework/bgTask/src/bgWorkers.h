#pragma once

#include "resmgt/mtGroup.h"

#include <queue>

namespace Ko {

/// A group of workers of the manager.
class BgWorkers final : public MtGroup<std::queue<MtTask>> {
public:
    using MtGroup::MtGroup;
};

} // namespace Ko
