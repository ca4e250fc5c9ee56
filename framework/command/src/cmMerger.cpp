#include "framework/command/cmMerger.h"

#include "framework/command/cmMacroCommand.h"

#include <typeinfo>

namespace Ko {

namespace {

// The command that a step consists of; null for a group.
CmCommand* soleCommand(CmCommand& step) {
    auto* const macro = dynamic_cast<CmMacroCommand*>(&step);
    if (!macro) return &step;
    return macro->getSize() == 1 ? soleCommand(*macro->getCommand(0)) : nullptr;
}

bool isRedone(CmCommand const* command) {
    return command && !command->getDisableExecutionOnRedo();
}

} // namespace

CmMerger::CmMerger() = default;
CmMerger::~CmMerger() = default;
CmMergeable::~CmMergeable() = default;

CmMergerByTime::CmMergerByTime(std::chrono::milliseconds interval) noexcept : _interval(interval) {}
CmMergerByTime::~CmMergerByTime() = default;

RCShdPtr<CmMergerByTime> CmMergerByTime::create(std::chrono::milliseconds interval) {
    return RCShdPtr<CmMergerByTime>::create(interval);
}

RCShdPtr<CmCommand> CmMergerByTime::merge(RCShdPtr<CmCommand> const& last, RCShdPtr<CmCommand> const& next) {
    CmCommand* const earlier = soleCommand(*last);
    CmCommand* const later = soleCommand(*next);
    if (!isRedone(earlier) || !isRedone(later) || typeid(*earlier) != typeid(*later)) return nullptr;
    auto* const base = dynamic_cast<CmMergeable*>(earlier);
    auto const* const addition = dynamic_cast<CmMergeable const*>(later);
    if (!base || base->getMergeTarget() != addition->getMergeTarget()) return nullptr;
    if (addition->getMergeTime() - base->getMergeTime() > _interval) return nullptr;
    if (last->getDescription() != next->getDescription() || !base->absorb(*later)) return nullptr;
    base->_time = addition->getMergeTime();
    return last;
}

} // namespace Ko
