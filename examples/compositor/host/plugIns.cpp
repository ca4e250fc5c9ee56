#include "host/plugIns.h"

#include "framework/plugInMgr/pimUtils.h"
#include "resmgt/msgServer.h"

#include <ostream>

namespace compositor {

namespace {

using namespace Ko;

constexpr char const* types[] = {"op", "gen"};

} // namespace

PlugIns::PlugIns(std::ostream& errors) {
    PimUtils::setInterface(COMPOSITOR_INTERFACE);
    MsgProtocol::setHandler([&errors](Msg const& message) { errors << message.getText() << std::endl; });
    for (char const* const type : types)
        PimUtils::loadType(type, InInitMgr::Reinitialization, PimUtils::getNullCb());
    MsgProtocol::setHandler({});
}

} // namespace compositor
