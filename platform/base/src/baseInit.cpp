#include "base/baseInit.h"

#include "base/evEventManager.h"

namespace Ko {

namespace {

class BaseInit final : public InInit<KoInit::base> {
public:
    BaseInit() : InInit("base", packagesOf<>()) {}

    void initialize() override { EvEventManager::performInitialize(); }
    void finalize() override { EvEventManager::performFinalize(); }
};

BaseInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::base>::getType() {
    return typeid(KoInit::base);
}

} // namespace Ko
