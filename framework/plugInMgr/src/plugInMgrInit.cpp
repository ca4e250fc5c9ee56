#include "framework/plugInMgr/plugInMgrInit.h"

#include "base/baseInit.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

class PlugInMgrInit final : public InInit<KoInit::plugInMgr> {
public:
    PlugInMgrInit() : InInit("plugInMgr", packagesOf<KoInit::resmgt, KoInit::base>()) {}
};

PlugInMgrInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::plugInMgr>::getType() {
    return typeid(KoInit::plugInMgr);
}

} // namespace Ko
