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

/// An operation that a user can invoke: an entry of a menu, a drop, a verb of a script. It applies to a target item and an
/// input item, such as the layer under the pointer and the layers dropped on it.
///
/// Actions are registered with the `ActRegistry`, which owns them. To perform one, ask the registry which actions are valid
/// for a target and an input, and perform an entry of the answer; the action is not asked again whether it is valid.
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

    /// Whether the action can be performed on this target with this input. It is called often, for items of any kind:
    /// answer false for unknown kinds, and change nothing.
    [[nodiscard]] virtual bool inputValid(
        RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const = 0;
    /// Performs the action.
    /// @param selection the action may add items to it, such as those that it has made.
    virtual void performAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        RCShdPtr<SnSelection> const& selection) const = 0;
    /// Appends the choices that the action offers, if any.
    /// @returns their number.
    virtual int enumOptions(
        RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input, Vector<LiString>& options) const;
    /// The action's identity, by which it is found and sorted: "Rename Layer".
    [[nodiscard]] virtual LiString getDescription() const = 0;
    /// The text to show instead of the description; empty for the description itself.
    [[nodiscard]] virtual std::string getDisplayString() const;
    /// The name of the group of actions that are queried or unregistered together; empty for none.
    [[nodiscard]] virtual std::string getGroup() const;
    /// The description of the composite action under which this one is listed; empty for one on the top level.
    [[nodiscard]] virtual std::string getCompositeName() const;

    /// Sets the result of `getDisplayString`, unless that is overridden.
    void setDisplayString(std::string const& text);

    /// Performs an action that needs neither target nor input, on two empty `ActBasicParam` items.
    void performAction() const;
    /// Whether the action is valid for two empty `ActBasicParam` items.
    [[nodiscard]] bool inputValid() const;

    /// "ToggleOn ": how the description of an action begins that switches something on.
    [[nodiscard]] static LiString toggleOnString();
    /// "ToggleOff ": how the description of an action begins that switches something off.
    [[nodiscard]] static LiString toggleOffString();

private:
    friend struct std::default_delete<ActAction>;

    static void destroy(ActAction* action) noexcept;

    std::string _displayString;
};

} // namespace Ko

/// An `OPtr<ActAction>` may be reset at any time: while an operation of the action runs, called by the registry, by one of
/// its entries or by `performAction()`, destruction is delayed until that operation returns.
template <>
struct std::default_delete<Ko::ActAction> {
    constexpr default_delete() noexcept = default;
    /// From the deleter of a derived class.
    template <std::derived_from<Ko::ActAction> Action>
    default_delete(std::default_delete<Action> const&) noexcept {}

    /// Destroys the action, now or when its operation returns.
    void operator()(Ko::ActAction* action) const noexcept { Ko::ActAction::destroy(action); }
};
