#pragma once

#include "base/oPtr.h"
#include "framework/command/cmTimedCommand.h"

namespace Ko {

class CmMacroCommandImp;

/// Several commands that are one: executed from first to last, unexecuted from last to first, in one undo step.
///
/// When one of them throws, the loop stops there and the exception passes on; what ran before is not taken back.
class KO_FRAMEWORK_API CmMacroCommand : public CmTimedCommand {
public:
    /// Begins without commands and without a description.
    static RCShdPtr<CmMacroCommand> create();
    ~CmMacroCommand() override;

    /// Appends a command, and does not execute it.
    void add(RCShdPtr<CmCommand> cmd);
    /// The macro must not be empty.
    RCShdPtr<CmCommand> removeLast();
    /// Of the commands alone; a description that was set stays:
    bool isEmpty() const noexcept;
    void clear() noexcept;

    /// Makes the next so many calls of `add` unable to fail.
    void makeRoom(std::size_t count = 1);

    /// What the user reads after "Undo" instead of the list of commands.
    void setDescription(LiString const& text);
    /// The text that was set; empty if none was.
    LiString const& getOwnDescription() const noexcept;
    /// The text that was set, else "Macro: " and the descriptions of the commands, with "; " between them.
    LiString getDescription() const override;
    void dump(XmlWriter& writer) const override;

protected:
    CmMacroCommand();
    void executeInternal() override;
    void unexecuteInternal() override;

private:
    friend class RCShdPtr<CmMacroCommand>;

    OPtr<CmMacroCommandImp> _imp;
};

} // namespace Ko
