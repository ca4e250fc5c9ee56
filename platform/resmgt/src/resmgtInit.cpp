#include "resmgt/resmgtInit.h"

#include "base/baseInit.h"
#include "resmgt/osChildProcess.h"

namespace Ko {

namespace {

class ResmgtInit final : public InInit<KoInit::resmgt> {
public:
    ResmgtInit() : InInit("resmgt", packagesOf<KoInit::base>()) {}

    void finalize() override { OsChildProcess::finalize(); }
};

ResmgtInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::resmgt>::getType() {
    return typeid(KoInit::resmgt);
}

} // namespace Ko
