#pragma once

#include "framework/command/cmCommand.h"

namespace Ko {

/// A command that does nothing: the bottom of every command stack, "Initial State".
class KO_FRAMEWORK_API CmNullCommand : public CmCommand {
public:
    /// A new one each time:
    static RCShdPtr<CmNullCommand> create();
    ~CmNullCommand() override;

    LiString getDescription() const override;
    /// Another one.
    RCShdPtr<CmCommand> clone() const;

protected:
    CmNullCommand() = default;
    void executeInternal() override;
    void unexecuteInternal() override;

private:
    friend class RCShdPtr<CmNullCommand>;
};

} // namespace Ko
