#include "base/baseInit.h"

#include "base/inInit.h"

namespace Ko {

namespace {

class BaseInit final : public InInit<KoInit::base> {
public:
    BaseInit() : InInit("base", packagesOf<>()) {}
};

BaseInit package;

} // namespace

} // namespace Ko
