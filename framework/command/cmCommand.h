#pragma once

#include "base/rcShdPtr.h"
#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

#include <iosfwd>

namespace Ko {

class XmlWriter;

/// One undoable change of the document.
///
/// A concrete command keeps what it needs to make its change and to take it back, and is made by a static `create(...)`.
/// It is executed once, through a `CmUndoGuard` or a `CmCommandStack`, and from then on undone and redone in turn by the
/// stack that logged it, so that each time the document is as it was the last time. Application thread only.
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
    virtual LiString getDescription() const = 0;
    /// How long the last execution, or unexecution, took, in seconds; 0.0 where nothing measures it:
    virtual double getExecutionTime() const;
    virtual double getUnexecutionTime() const;
    /// Writes the command as an element of its own, for diagnosis.
    virtual void dump(XmlWriter& writer) const;

    /// When true, execution does nothing: whoever logged the command had produced its effect, and a redo produces it by
    /// other means. Unexecution still takes the change back:
    bool getDisableExecutionOnRedo() const noexcept { return _disableExecutionOnRedo; }
    void setDisableExecutionOnRedo(bool disable) noexcept { _disableExecutionOnRedo = disable; }

protected:
    CmCommand() = default;

    /// Makes the change. Throws `CmEx::ExCommandFailure` if it cannot, and then leaves everything as it was.
    virtual void executeInternal() = 0;
    /// Takes the change back, under the same rule.
    virtual void unexecuteInternal() = 0;

private:
    friend class CmCommandStack;
    friend class CmTimedCommand;

    virtual void execute();
    virtual void unexecute();

    bool _disableExecutionOnRedo = false;
};

/// Writes the command as XML, as `RCShdPtr<CmCommand>::dump` does.
KO_FRAMEWORK_API void dumpObject(std::ostream& stream, CmCommand const& command);

} // namespace Ko
