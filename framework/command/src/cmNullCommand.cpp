#include "framework/command/cmNullCommand.h"

namespace Ko {

CmNullCommand::~CmNullCommand() = default;

RCShdPtr<CmNullCommand> CmNullCommand::create() {
    return RCShdPtr<CmNullCommand>::create();
}
RCShdPtr<CmCommand> CmNullCommand::clone() const {
    return create();
}
LiString CmNullCommand::getDescription() const {
    return "Initial State";
}
void CmNullCommand::executeInternal() {}
void CmNullCommand::unexecuteInternal() {}

} // namespace Ko
