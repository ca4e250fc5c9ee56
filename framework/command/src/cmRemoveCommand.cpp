#include "framework/command/cmRemoveCommand.h"

namespace Ko {

CmRemoveCommand::CmRemoveCommand() = default;
CmRemoveCommand::~CmRemoveCommand() = default;

} // namespace Ko
