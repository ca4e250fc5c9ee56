#include "resmgt/lgPackageGroup.h"

namespace Ko {

namespace {

LgMajorGroup& framework() {
    return LgMajorGroup::getInstanceForName("Framework");
}

} // namespace

LgPackageGroup::~LgPackageGroup() = default;

void LgPackageGroup::create() {
    _group = std::make_unique<LgMinorGroup>(framework(), _name);
}

void LgPackageGroup::destroy() noexcept {
    _group.reset();
}

void LgPackageGroup::write(char const* name, int level, LiString const& text) {
    LgMinorGroup(framework(), name).write(level, text);
}

} // namespace Ko
