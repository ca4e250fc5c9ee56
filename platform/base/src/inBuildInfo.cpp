#include "base/inBuildInfo.h"

namespace Ko {

namespace {

std::vector<OPtr<InBuildInfo>>& infos() {
    static std::vector<OPtr<InBuildInfo>> registered;
    return registered;
}

} // namespace

InBuildInfo::~InBuildInfo() = default;

void InBuildInfoUtil::registerInfo(OPtr<InBuildInfo> info) {
    infos().push_back(std::move(info));
}

std::vector<InBuildInfo const*> InBuildInfoUtil::getInfos() {
    std::vector<InBuildInfo const*> result;
    for (OPtr<InBuildInfo> const& info : infos())
        result.push_back(info.get());
    return result;
}

} // namespace Ko
