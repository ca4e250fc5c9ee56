#include "base/baseInit.h"

namespace Ko {

namespace {

class BaseInit final : public InInit<KoInit::base> {
public:
    BaseInit() : InInit("base", packagesOf<>()) {}
};

BaseInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::base>::getType() {
    return typeid(KoInit::base);
}

} // namespace Ko
