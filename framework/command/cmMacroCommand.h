#pragma once

#include "base/oPtr.h"
#include "framework/command/cmTimedCommand.h"

namespace Ko {

class CmMacroCommandImp;

/// Several commands as one undo step: executed from first to last, unexecuted from last to first.
///
/// When a command throws, the loop stops there and the exception passes on; the commands before it are not taken back.
/// While the commands run, or are asked for their descriptions, the list cannot be changed: unexecution would not match
/// what was executed. `add`, `removeLast`, `clear` and `makeRoom` throw `ExAssertionFailed` then.
class KO_FRAMEWORK_API CmMacroCommand : public CmTimedCommand {
public:
    /// Creates a macro without commands and without a description.
    [[nodiscard]] static RCShdPtr<CmMacroCommand> create();
    ~CmMacroCommand() override;

    /// Appends a command without executing it.
    void add(RCShdPtr<CmCommand> cmd);
    /// Removes the last command and returns it.
    /// @throws ExAssertionFailed when the macro is empty.
    RCShdPtr<CmCommand> removeLast();
    /// Whether there are no commands.
    [[nodiscard]] bool isEmpty() const noexcept;
    /// The number of commands, each of which may be a macro itself.
    [[nodiscard]] int getSize() const noexcept;
    /// The command at a position from 0 to `getSize() - 1`, in the order of execution.
    [[nodiscard]] RCShdPtr<CmCommand> const& getCommand(int position) const noexcept;
    /// Removes all commands. The description stays.
    void clear();

    /// Reserves memory, so that the next `count` calls of `add` cannot fail.
    void makeRoom(std::size_t count = 1);

    /// Sets the text that the user reads after "Undo", instead of the list of commands.
    void setDescription(LiString const& text);
    /// The text that was set; empty if none was.
    [[nodiscard]] LiString const& getOwnDescription() const noexcept;
    /// The text that was set, else "Macro: " and the descriptions of the commands, separated by "; ".
    [[nodiscard]] LiString getDescription() const override;
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
