#pragma once

#include "base/oPtr.h"
#include "framework/actions/actRegistry.h"
#include "framework/actions/src/actPerforming.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace Ko {

/// The registered actions, in the order of their registration, and owned. An action may be registered several times.
class ActRecords {
public:
    class Hold;
    class Walk;

    ActRecords() = default;
    ~ActRecords();
    ActRecords(ActRecords const&) = delete;
    ActRecords& operator=(ActRecords const&) = delete;

    /// Those of the registry.
    static ActRecords& get() { return *ActRegistry::getInstance()._records; }

    void append(OPtr<ActAction> action, ActRegistry::DynamicState state);
    /// Removes the first registration of the action. Null if there is none.
    OPtrRet<ActAction> remove(ActAction const* action) noexcept;
    /// Removes the registration at this place, and destroys the action unless it is registered elsewhere too.
    void destroyAt(std::size_t place) noexcept;
    /// The action that was registered at this place; null if it was removed.
    ActAction const* getAt(std::size_t place) const noexcept { return _records[place].action; }
    /// The dynamic actions.
    Vector<ActAction const*> getDynamic() const;
    /// Removes the dynamic actions. Their makers own them then.
    void releaseDynamic() noexcept;
    /// Destroys all actions, in order. Needs no memory.
    void destroyAll() noexcept;

private:
    struct Record {
        ActAction* action; // null after removal during a hold
        ActRegistry::DynamicState state;
    };

    OPtr<ActAction> takeAt(std::size_t place) noexcept;
    void closeUp() noexcept;

    Vector<Record> _records;
    std::unordered_map<ActAction const*, std::uint32_t> _registrations; // their number, for each action
    std::size_t _removals = 0;                                          // since the beginning
    int _holds = 0;
};

/// While it exists, registrations keep their places. It knows which actions of its beginning are still registered, also
/// when a new action lies at the address of a destroyed one.
class ActRecords::Hold {
public:
    explicit Hold(ActRecords& records) noexcept;
    ~Hold();
    Hold(Hold const&) = delete;
    Hold& operator=(Hold const&) = delete;

    /// Whether any registration was removed since the beginning.
    bool hasLost() const noexcept { return _records._removals != _removals; }
    /// Whether this action has been registered since the beginning.
    bool isRegistered(ActAction const* action);

protected:
    ActRecords& _records;
    std::size_t const _end;

private:
    void findRemaining();

    std::size_t const _removals;
    std::size_t _removalsKnown;
    Vector<ActAction const*> _remaining; // sorted by address; filled only after a removal
};

/// Walks through the actions that are registered at its beginning and still registered when it reaches them. Operations of
/// the current action may register and unregister any action; the current one is not destroyed before the walk moves on.
class ActRecords::Walk : public Hold {
public:
    explicit Walk(ActRecords& records) noexcept : Hold(records) {}

    /// Null at the end.
    ActAction* next() noexcept {
        for (_asked.set(nullptr); _next < _end;)
            if (ActAction* const action = _records._records[_next++].action) {
                _asked.set(action);
                return action;
            }
        return nullptr;
    }
    std::size_t getPlace() const noexcept { return _next - 1; }
    /// Whether the current action is still registered.
    bool isCurrentRegistered() const noexcept { return _records._records[getPlace()].action != nullptr; }

private:
    std::size_t _next = 0;
    ActPerforming _asked;
};

} // namespace Ko
