#include "framework/dragAndDrop/dragAndDropInit.h"

#include "base/baseInit.h"
#include "base/inInit.h"
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
};

DragAndDropInit package;

} // namespace

} // namespace Ko
