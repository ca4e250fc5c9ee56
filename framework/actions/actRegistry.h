#pragma once

#include "base/inSingleton.h"
#include "base/oPtr.h"
#include "framework/actions/actAction.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "internalAPI/constIterator.h"

#include <cstdint>

namespace Ko {

class ActRegistry;
extern template class KO_FRAMEWORK_API InSingleton<ActRegistry>;

/// All actions of the process, in the order of their registration; it owns them. Menus, drops and scripts ask it which
/// actions are valid for a target and an input, and get entries that are ready to be performed.
///
/// An answer is a snapshot: it does not change when actions are registered and unregistered, but whoever destroys an
/// action sees to it that its entries are not used any more. An action that is being performed through an entry may
/// register and unregister actions, itself included.
///
/// A query asks every action, in one pass; nothing is kept between queries. The registry exists while the package
/// "actions" is initialised. Application thread only.
///
///     auto entry = ActRegistry::getInstance().getActions(target, input, "", ActRegistry::AllSorted);
///     for (; !entry.atEnd(); ++entry)
///         menu.add(entry->getDescription());
class KO_FRAMEWORK_API ActRegistry : public InSingleton<ActRegistry> {
public:
    class Entry;

    /// Any other value is like `AllSorted`.
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

    /// For the package "actions".
    static void initialize();
    /// Destroys the actions that are still registered, in order.
    static void finalize();

    /// Appends the action; a null one is ignored. One that is registered twice is listed twice, and must be unregistered
    /// twice before its owner destroys it.
    void registerAction(OPtr<ActAction> action, DynamicState state);
    /// Takes out the first registration of the action.
    /// @returns the action, or null if it is not registered.
    OPtrRet<ActAction> unregisterAction(ActAction const* action);
    /// Unregisters and destroys the actions of one or several groups.
    void unregisterActionsInGroup(std::string const& group);
    void unregisterActionsInGroup(Set<std::string> const& groups);
    /// Takes out the dynamic actions. It does not destroy them: that is left to whoever made them.
    void deleteAllDynamicActions();

    /// The first action that has this description and composite name; null if there is none, or no description is given.
    ActAction* getAction(LiString const& description, std::string const& compositeName) const;

    /// The actions that are valid for the target and the input, of those that are listed under a composite name: the empty
    /// one for the top level. Where groups are given, only actions of these; no groups at all are any group. So in all queries.
    ConstIterator<Entry> getActions(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        std::string const& compositeName, Numerator order) const;
    ConstIterator<Entry> getActions(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        Set<std::string> const& groups, std::string const& compositeName, Numerator order) const;

    /// The actions that are valid with two empty `ActBasicParam` items as target and input.
    ConstIterator<Entry> getNoTargetNoInputActions(
        std::string const& group, std::string const& compositeName, Numerator order) const;
    ConstIterator<Entry> getNoTargetNoInputActions(
        Set<std::string> const& groups, std::string const& compositeName, Numerator order) const;

    /// The actions of one or several groups, valid or not.
    ConstIterator<ActAction const*> getActionsInGroup(std::string const& group, Numerator order) const;
    ConstIterator<ActAction const*> getActionsInGroup(Set<std::string> const& groups, Numerator order) const;

    /// The same for several targets. The scripting interpreter is kept from ending meanwhile.
    ConstIterator<Entry> getActions(RCShdPtr<SnSelection const> const& selection, RCShdPtr<SnItem const> const& input,
        std::string const& compositeName, Numerator order) const;
    ConstIterator<Entry> getActions(List<RCShdPtr<SnItem const>> const& targets, RCShdPtr<SnItem const> const& input,
        std::string const& compositeName, Numerator order) const;
    /// The input is a `DrCarrierItem` with the carrier.
    ConstIterator<Entry> getActions(List<RCShdPtr<SnItem const>> const& targets, RCShdPtr<DrCarrier> const& carrier,
        std::string const& compositeName, Numerator order) const;

protected:
    ActRegistry();
    virtual ~ActRegistry();

private:
    friend class InSingleton<ActRegistry>;

    // The actions are owned here; not by a pointer that says so, because one may be registered twice.
    struct Record {
        ActAction* action;
        DynamicState state;
        std::uint32_t place; // at the end of the registry
    };

    template <class Targets>
    ConstIterator<Entry> query(Targets const& targets, RCShdPtr<SnItem const> const& input,
        Set<std::string> const& groups, std::string const& compositeName, Numerator order) const;
    template <class Targets>
    Vector<Entry> queryFirst(Targets const& targets, RCShdPtr<SnItem const> const& input,
        Set<std::string> const& groups, std::string const& compositeName) const;
    template <class Targets>
    Vector<Entry> querySorted(Targets const& targets, RCShdPtr<SnItem const> const& input,
        Set<std::string> const& groups, std::string const& compositeName) const;
    template <class Visit>
    void forEachListed(Set<std::string> const& groups, std::string const& compositeName, Visit visit) const;
    bool isRegistered(ActAction const* action) const noexcept;
    void destroyAll() noexcept;
    static void keepFirstRegistrations(Vector<Record>& records) noexcept;

    Vector<Record> _records;
};

/// An action with the target and input for which it was found valid. It does not own the action.
class KO_FRAMEWORK_API ActRegistry::Entry {
public:
    /// @param action is not owned, and valid for the two.
    Entry(ActAction const* action, RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input)
        : _action(action), _target(target), _input(input) {}

    /// What the entry was made of:
    ActAction const* getAction() const noexcept { return _action; }
    RCShdPtr<SnItem const> const& getTarget() const noexcept { return _target; }
    RCShdPtr<SnItem const> const& getInput() const noexcept { return _input; }

    /// What the action answers now; the options are those for the target and the input:
    LiString getDescription() const;
    std::string getDisplayString() const;
    std::string getGroup() const;
    std::string getCompositeName() const;
    int enumOptions(Vector<LiString>& options) const;

    /// Performs the action on the target with the input, and keeps it alive meanwhile.
    void performAction(RCShdPtr<SnSelection> const& selection) const;
    /// Performs it with another input, which the action must take.
    void performAction(RCShdPtr<SnItem const> const& input, RCShdPtr<SnSelection> const& selection) const;

private:
    ActAction const* _action;
    RCShdPtr<SnItem const> _target;
    RCShdPtr<SnItem const> _input;
};

extern template class KO_FRAMEWORK_API ConstIterator<ActRegistry::Entry>;
extern template class KO_FRAMEWORK_API ConstIterator<ActAction const*>;

} // namespace Ko
