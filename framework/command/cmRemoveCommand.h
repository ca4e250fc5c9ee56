#pragma once

#include "framework/command/cmCommand.h"

namespace Ko {

/// Base of the commands that remove something from the document, so that they can be told from others.
class KO_FRAMEWORK_API CmRemoveCommand : public CmCommand {
public:
    ~CmRemoveCommand() override;

protected:
    CmRemoveCommand();
};

} // namespace Ko
