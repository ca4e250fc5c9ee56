#include "framework/bgTask/src/bgLog.h"

#include "base/assertions.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\bgTask\\src\\bgTaskInit"};
constexpr int createdTwice = 74;
constexpr int neverCreated = 125;

} // namespace

OPtr<LgMinorGroup> BgLog::_group;

void BgLog::initialize() {
    source.require(!_group, "LgGroups::KO_XGLUE( MinorLevel, BgTask ) == 0", createdTwice);
    _group = std::make_unique<LgMinorGroup>(LgMajorGroup::getInstanceForName("Framework"), "BgTask");
}

void BgLog::finalize() {
    source.require(_group != nullptr, "LgGroups::KO_XGLUE( MinorLevel, BgTask ) != 0", neverCreated);
    _group.reset();
}

} // namespace Ko
