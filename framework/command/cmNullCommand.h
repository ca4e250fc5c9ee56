#pragma once

#include "framework/command/cmCommand.h"

namespace Ko {

/// A command that does nothing. The bottom element of every command stack is one, described as "Initial State".
class KO_FRAMEWORK_API CmNullCommand : public CmCommand {
public:
    /// Creates a new null command each time.
    [[nodiscard]] static RCShdPtr<CmNullCommand> create();
    ~CmNullCommand() override;

    [[nodiscard]] LiString getDescription() const override;
    /// Creates another null command.
    [[nodiscard]] RCShdPtr<CmCommand> clone() const;

protected:
    CmNullCommand() = default;
    void executeInternal() override;
    void unexecuteInternal() override;

private:
    friend class RCShdPtr<CmNullCommand>;
};

} // namespace Ko
