#include "framework/command/cmUndoGuardExtension.h"

namespace Ko {

CmUndoGuardExtension::CmUndoGuardExtension() = default;
CmUndoGuardExtension::~CmUndoGuardExtension() = default;

} // namespace Ko
