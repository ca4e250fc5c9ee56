#include "framework/dragAndDrop/dragAndDropInit.h"

#include "base/baseInit.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "internalAPI/internalAPIInit.h"
#include "pluginAPI/pluginAPIInit.h"
#include "primitives/primitivesInit.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

class DragAndDropInit final : public InInit<KoInit::dragAndDrop> {
public:
    DragAndDropInit()
        : InInit("dragAndDrop",
              packagesOf<KoInit::internalAPI, KoInit::primitives, KoInit::pluginAPI, KoInit::resmgt, KoInit::base>()) {}

    void initialize() override { SnItemConvert<RCShdPtr<DrCarrier>>::initialize(); }
    void finalize() override { SnItemConvert<RCShdPtr<DrCarrier>>::finalize(); }
};

DragAndDropInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::dragAndDrop>::getType() {
    return typeid(KoInit::dragAndDrop);
}

} // namespace Ko
