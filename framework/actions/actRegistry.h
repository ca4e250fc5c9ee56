#pragma once

#include "base/inSingleton.h"
#include "base/oPtr.h"
#include "framework/actions/actAction.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "internalAPI/cbDispatcher.h"
#include "internalAPI/constIterator.h"

#include <cstdint>
#include <functional>

namespace Ko {

class ActGroupedEntry;
class ActRecords;
class ActRegistry;
extern template class KO_FRAMEWORK_API InSingleton<ActRegistry>;

/// What has changed about the registered actions. Delivered after the operation that changed it.
struct ActRegistryChange {
    /// What happened to the actions.
    enum class Kind : std::uint8_t {
        /// They were registered.
        Registered,
        /// They were unregistered, perhaps destroyed too.
        Unregistered,
        /// The answers of the actions may differ from now on: whether they are valid, their texts, how they are shown.
        Invalidated
    };

    /// What happened.
    Kind kind;
    /// The actions, not owned. Those that were unregistered may be destroyed already: only their addresses may be used. Empty for all
    /// actions, when all are invalidated.
    Vector<ActAction const*> actions;
};
extern template class KO_FRAMEWORK_API CbDispatcher<ActRegistryChange>;

/// All actions of the process, in the order of their registration; it owns them. Menus, drops and scripts ask it which
/// actions are valid for a target and an input, and get entries that are ready to be performed.
///
/// An answer is a snapshot: it does not change when actions are registered and unregistered. Entries do not own their
/// actions: an entry must not be used after its action was destroyed. An action may register and unregister actions, itself
/// included, while a query asks it or an entry performs it; it is destroyed when its operation has returned. A query leaves
/// out actions that are registered or unregistered while it runs.
///
/// A query asks every action, in one pass; nothing is kept between queries. The registry exists while the package
/// "actions" is initialised. Application thread only.
///
///     for (auto const& entry : ActRegistry::getInstance().getActions(target, input, "", ActRegistry::AllSorted).elements())
///         menu.add(entry.getDescription());
class KO_FRAMEWORK_API ActRegistry : public InSingleton<ActRegistry> {
public:
    class Entry;

    /// How a query orders and enumerates its results. Any other value is like `AllSorted`.
    enum Numerator : std::int32_t {
        /// In the order of registration; of several targets, each action with the first one that it is valid for.
        FirstOnly = 0,
        /// Sorted by description, byte by byte; of several targets, each action with every one that it is valid for.
        AllSorted = 1
    };
    /// Whether `deleteAllDynamicActions` takes the action out. Any other value is like `Static`.
    enum DynamicState : std::int32_t { Static = 0, Dynamic = 1 };

    ActRegistry(ActRegistry const&) = delete;
    ActRegistry& operator=(ActRegistry const&) = delete;

    /// Creates the registry. For the package "actions".
    static void initialize();
    /// Destroys the actions that are still registered, in order, and the registry. For the package "actions".
    static void finalize();

    /// Appends the action; a null one is ignored. One that is registered twice is listed twice, and must be unregistered
    /// twice before its owner destroys it.
    void registerAction(OPtr<ActAction> action, DynamicState state);
    /// Removes the first registration of the action. The caller becomes its owner.
    /// @returns the action, or null if it is not registered.
    OPtrRet<ActAction> unregisterAction(ActAction const* action);
    /// Unregisters the actions of a group and destroys them, one after the other. The empty group is that of the actions
    /// without a group; so in all operations that take one group.
    void unregisterActionsInGroup(std::string const& group);
    /// Unregisters and destroys the actions of several groups; no groups, no actions.
    void unregisterActionsInGroup(Set<std::string> const& groups);
    /// Unregisters the dynamic actions. It does not destroy them; their makers do.
    void deleteAllDynamicActions();

    /// The first action that has this description and composite name; null if there is none, or no description is given.
    [[nodiscard]] ActAction* getAction(LiString const& description, std::string const& compositeName) const;

    /// The actions that are valid for the target and the input, of those that are listed under the composite name; the
    /// empty name is that of the top level.
    [[nodiscard]] ConstIterator<Entry> getActions(RCShdPtr<SnItem const> const& target,
        RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const;
    /// Only those of the groups; an empty set stands for all groups.
    [[nodiscard]] ConstIterator<Entry> getActions(RCShdPtr<SnItem const> const& target,
        RCShdPtr<SnItem const> const& input, Set<std::string> const& groups, std::string const& compositeName,
        Numerator order) const;

    /// The actions of the group that are valid with two empty `ActBasicParam` items as target and input.
    [[nodiscard]] ConstIterator<Entry> getNoTargetNoInputActions(
        std::string const& group, std::string const& compositeName, Numerator order) const;
    /// Those of several groups; an empty set stands for all groups.
    [[nodiscard]] ConstIterator<Entry> getNoTargetNoInputActions(
        Set<std::string> const& groups, std::string const& compositeName, Numerator order) const;

    /// The actions of the group, valid or not.
    [[nodiscard]] ConstIterator<ActAction const*> getActionsInGroup(std::string const& group, Numerator order) const;
    /// The actions of several groups, valid or not; no groups, no actions.
    [[nodiscard]] ConstIterator<ActAction const*> getActionsInGroup(
        Set<std::string> const& groups, Numerator order) const;

    /// As for one target, for each item of the selection. The scripting interpreter is kept from ending meanwhile.
    [[nodiscard]] ConstIterator<Entry> getActions(RCShdPtr<SnSelection const> const& selection,
        RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const;
    /// As for a selection, for each item of a list.
    [[nodiscard]] ConstIterator<Entry> getActions(List<RCShdPtr<SnItem const>> const& targets,
        RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const;
    /// As for a list with an input, which is a `DrCarrierItem` with the carrier.
    [[nodiscard]] ConstIterator<Entry> getActions(List<RCShdPtr<SnItem const>> const& targets,
        RCShdPtr<DrCarrier> const& carrier, std::string const& compositeName, Numerator order) const;

    /// The actions that are valid for some of the targets, each once, with all those targets. The class is in `actGroupedEntry.h`.
    [[nodiscard]] Vector<ActGroupedEntry> getGroupedActions(List<RCShdPtr<SnItem const>> const& targets,
        RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const;
    /// The same for the items of a selection.
    [[nodiscard]] Vector<ActGroupedEntry> getGroupedActions(RCShdPtr<SnSelection const> const& selection,
        RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const;

    /// All actions, valid or not, those with a composite name included.
    [[nodiscard]] ConstIterator<ActAction const*> getAllActions(Numerator order) const;
    /// The names of all groups that have actions; the empty one is left out.
    [[nodiscard]] Set<std::string> getGroups() const;

    /// Calls `callable` after actions were registered, unregistered or invalidated: once for each operation. What it throws is logged.
    /// Not called when the registry destroys the last actions at the end.
    [[nodiscard]] CbSubscription onChange(std::function<void(ActRegistryChange const&)> callable);
    /// Tells the listeners that the answers of an action may differ from now on; to be called by the author of the action.
    /// @param action null for all actions.
    void invalidate(ActAction const* action);

protected:
    ActRegistry();
    virtual ~ActRegistry();

private:
    friend class InSingleton<ActRegistry>;
    friend class ActRecords;

    void notify(ActRegistryChange const& change) noexcept;
    void notify(ActRegistryChange::Kind kind, ActAction const* action) noexcept;

    OPtr<ActRecords> _records;
    CbDispatcher<ActRegistryChange> _changes;
};

/// An action with the target and input for which it was found valid. It does not own the action.
class KO_FRAMEWORK_API ActRegistry::Entry {
public:
    /// @param action is not owned; it is valid for the target and the input.
    Entry(ActAction const* action, RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input)
        : _action(action), _target(target), _input(input) {}

    /// The action, not owned.
    [[nodiscard]] ActAction const* getAction() const noexcept { return _action; }
    /// The target that the action was found valid for.
    [[nodiscard]] RCShdPtr<SnItem const> const& getTarget() const noexcept { return _target; }
    /// The input that the action was found valid for.
    [[nodiscard]] RCShdPtr<SnItem const> const& getInput() const noexcept { return _input; }

    /// The present description of the action.
    [[nodiscard]] LiString getDescription() const;
    /// The present display string of the action.
    [[nodiscard]] std::string getDisplayString() const;
    /// The present group of the action.
    [[nodiscard]] std::string getGroup() const;
    /// The present composite name of the action.
    [[nodiscard]] std::string getCompositeName() const;
    /// Appends the choices that the action offers for the target and the input.
    /// @returns the number of choices.
    int enumOptions(Vector<LiString>& options) const;

    /// Performs the action on the target with the input, and keeps the action and its items alive meanwhile.
    void performAction(RCShdPtr<SnSelection> const& selection) const;
    /// Performs the action on the target with another input, which must be valid for it.
    void performAction(RCShdPtr<SnItem const> const& input, RCShdPtr<SnSelection> const& selection) const;

private:
    ActAction const* _action;
    RCShdPtr<SnItem const> _target;
    RCShdPtr<SnItem const> _input;
};

extern template class KO_FRAMEWORK_API ConstIterator<ActRegistry::Entry>;
extern template class KO_FRAMEWORK_API ConstIterator<ActAction const*>;

} // namespace Ko
