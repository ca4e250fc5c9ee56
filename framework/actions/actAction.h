#pragma once

#include "base/rcShdPtr.h"
#include "framework/frameworkApi.h"
#include "internalAPI/snItem.h"
#include "internalAPI/snSelection.h"
#include "resmgt/liString.h"

#include <concepts>
#include <memory>
#include <string>

namespace Ko {

/// Something that a user can do: an entry of a menu, a drop, a verb of a script. It applies to a target item and an input
/// item, such as the layer under the pointer and what is dropped on it.
///
/// Actions are registered with the `ActRegistry`, which owns them. Who wants to perform one asks the registry which are
/// valid for a target and an input, and performs an entry of the answer; it is not asked again whether it is valid.
/// Application thread only.
///
///     class RenameAction : public ActTypedAction<LiString, LiString> { ... };
///     ActRegistry::getInstance().registerAction(std::make_unique<RenameAction>(), ActRegistry::Static);
class KO_FRAMEWORK_API ActAction {
public:
    ActAction();
    ActAction(ActAction const&) = delete;
    ActAction& operator=(ActAction const&) = delete;
    virtual ~ActAction();

    /// Whether the action can be performed on this target with this input. Asked often, and for items of any kind: answers
    /// false for what it does not know, and changes nothing.
    virtual bool inputValid(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const = 0;
    /// @param selection the action may add items to it, such as those that it has made.
    virtual void performAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        RCShdPtr<SnSelection> const& selection) const = 0;
    /// Appends the choices that the action offers, if any.
    /// @returns their number.
    virtual int enumOptions(
        RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input, Vector<LiString>& options) const;
    /// The action's identity, by which it is found and sorted: "Rename Layer".
    virtual LiString getDescription() const = 0;
    /// What to show instead of the description, where it is not empty.
    virtual std::string getDisplayString() const;
    /// Names what can be asked for, or unregistered, together.
    virtual std::string getGroup() const;
    /// The description of the composite action under which this one is listed; empty for one on the top level.
    virtual std::string getCompositeName() const;

    /// What `getDisplayString` answers where it is not overridden.
    void setDisplayString(std::string const& text);

    /// For actions that need neither target nor input: perform it and ask whether it is valid with two empty
    /// `ActBasicParam` items:
    void performAction() const;
    bool inputValid() const;

    /// What the descriptions of actions that switch something on or off begin with, blank included:
    static LiString toggleOnString();
    static LiString toggleOffString();

private:
    friend struct std::default_delete<ActAction>;

    static void destroy(ActAction* action) noexcept;

    std::string _displayString;
};

} // namespace Ko

/// An `OPtr<ActAction>` may let go of its action at any time: one that is just being performed, through an entry of the
/// registry or without items, is destroyed when it has returned.
template <>
struct std::default_delete<Ko::ActAction> {
    constexpr default_delete() noexcept = default;
    /// From that of a class of actions.
    template <std::derived_from<Ko::ActAction> Action>
    default_delete(std::default_delete<Action> const&) noexcept {}

    /// Destroys the action, now or when it has returned.
    void operator()(Ko::ActAction* action) const noexcept { Ko::ActAction::destroy(action); }
};
