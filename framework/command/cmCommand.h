#pragma once

#include "base/rcShdPtr.h"
#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

#include <iosfwd>

namespace Ko {

class XmlWriter;

/// One undoable change of the document.
///
/// A concrete command stores what it needs to make its change and to revert it, and is created by a static `create(...)`.
/// It is executed once, through a `CmUndoGuard` or a `CmCommandStack`. From then on the stack that logged it undoes and
/// redoes it in turn, and each time finds the document in the same state. Application thread only.
///
///     class RenameCmd : public CmCommand {
///     public:
///         static RCShdPtr<RenameCmd> create(Layer& layer, LiString name);
///         LiString getDescription() const override { return "Rename Layer"; }
///     protected:
///         void executeInternal() override { std::swap(_layer.name, _name); }
///         void unexecuteInternal() override { std::swap(_layer.name, _name); }
///         ...
class KO_FRAMEWORK_API CmCommand : public RCBase {
public:
    ~CmCommand() override;

    /// One line for menus and logs, in the user's words: "Rename Layer".
    [[nodiscard]] virtual LiString getDescription() const = 0;
    /// Duration of the last execution in seconds; 0.0 in commands that do not measure it.
    [[nodiscard]] virtual double getExecutionTime() const;
    /// Duration of the last unexecution in seconds; 0.0 in commands that do not measure it.
    [[nodiscard]] virtual double getUnexecutionTime() const;
    /// Writes the command as an XML element, for diagnosis.
    virtual void dump(XmlWriter& writer) const;

    /// Whether execution does nothing. Unexecution still reverts the change.
    [[nodiscard]] bool getDisableExecutionOnRedo() const noexcept { return _disableExecutionOnRedo; }
    /// Set for commands whose effect other code produces, at first and on every redo; see `CmUndoGuardNoRedo`.
    void setDisableExecutionOnRedo(bool disable) noexcept { _disableExecutionOnRedo = disable; }

protected:
    CmCommand() = default;

    /// Makes the change. If it cannot, it leaves everything as it was and throws `CmEx::ExCommandFailure`.
    virtual void executeInternal() = 0;
    /// Reverts the change. If it cannot, it leaves everything as it was and throws `CmEx::ExCommandFailure`.
    virtual void unexecuteInternal() = 0;

private:
    friend class CmCommandStack;
    friend class CmMacroCommand;
    friend class CmTimedCommand;

    virtual void execute();
    virtual void unexecute();

    bool _disableExecutionOnRedo = false;
};

/// Writes the command as XML, as `RCShdPtr<CmCommand>::dump` does.
KO_FRAMEWORK_API void dumpObject(std::ostream& stream, CmCommand const& command);

} // namespace Ko
