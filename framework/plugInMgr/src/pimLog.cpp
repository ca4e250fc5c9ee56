#include "framework/plugInMgr/src/pimLog.h"

#include "base/assertions.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\plugInMgr\\src\\plugInMgrInit"};

} // namespace

OPtr<LgMinorGroup> PimLog::_group;

void PimLog::initialize() {
    source.require(!_group, "_group == 0");
    _group = std::make_unique<LgMinorGroup>(LgMajorGroup::getInstanceForName("Framework"), "PlugInMgr");
}

void PimLog::finalize() {
    source.require(_group != nullptr, "_group != 0");
    _group.reset();
}

} // namespace Ko
