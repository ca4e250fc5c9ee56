#pragma once

#include "framework/command/cmCommand.h"

namespace Ko {

/// Base class of commands that remove something from the document; it only marks them as such.
class KO_FRAMEWORK_API CmRemoveCommand : public CmCommand {
public:
    ~CmRemoveCommand() override;

protected:
    CmRemoveCommand();
};

} // namespace Ko
