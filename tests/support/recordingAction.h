#pragma once

#include "framework/actions/actRegistry.h"
#include "tests/support/items.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace KoTest {

/// An action of the kind `Base` with these names.
template <class Base>
class NamedAction : public Base {
public:
    NamedAction(std::string description, std::string compositeName, std::string group)
        : _description(std::move(description)), _compositeName(std::move(compositeName)), _group(std::move(group)) {}
    Ko::LiString getDescription() const override { return _description; }
    std::string getCompositeName() const override { return _compositeName; }
    std::string getGroup() const override { return _group; }

private:
    std::string const _description, _compositeName, _group;
};

/// Valid for all items; performs nothing.
class ValidAction : public NamedAction<Ko::ActAction> {
public:
    using NamedAction::NamedAction;
    bool inputValid(Ko::RCShdPtr<Ko::SnItem const> const&, Ko::RCShdPtr<Ko::SnItem const> const&) const override {
        return true;
    }
    void performAction(Ko::RCShdPtr<Ko::SnItem const> const&, Ko::RCShdPtr<Ko::SnItem const> const&,
        Ko::RCShdPtr<Ko::SnSelection> const&) const override {}
};

/// The properties of a test's action. It is valid if `isValid` returns true, by default always, and records each call of
/// `performAction` as "description(target,input)".
struct ActionTraits {
    std::string description;
    std::string compositeName;
    std::string group;
    std::function<bool(std::string const& target, std::string const& input)> isValid;
};

class RecordingAction : public Ko::ActAction {
public:
    using ActAction::inputValid;
    using ActAction::performAction;

    RecordingAction(ActionTraits traits, std::vector<std::string>& journal)
        : _traits(std::move(traits)), _journal(journal) {}
    ~RecordingAction() override {
        if (onDestroy) onDestroy();
        _journal.push_back("~" + _traits.description);
    }

    bool inputValid(
        Ko::RCShdPtr<Ko::SnItem const> const& target, Ko::RCShdPtr<Ko::SnItem const> const& input) const override {
        ++asked;
        return !_traits.isValid || _traits.isValid(valueOf(target), valueOf(input));
    }
    void performAction(Ko::RCShdPtr<Ko::SnItem const> const& target, Ko::RCShdPtr<Ko::SnItem const> const& input,
        Ko::RCShdPtr<Ko::SnSelection> const& selection) const override {
        if (onPerform) onPerform();
        if (selection && target) selection->add(target);
        _journal.push_back(_traits.description + "(" + valueOf(target) + "," + valueOf(input) + ")");
    }
    Ko::LiString getDescription() const override {
        ++descriptionsRead;
        if (onRead) onRead("description");
        return _traits.description;
    }
    std::string getGroup() const override {
        if (onRead) onRead("group");
        return _traits.group;
    }
    std::string getCompositeName() const override {
        if (onRead) onRead("composite name");
        return _traits.compositeName;
    }

    std::function<void()> onPerform;
    std::function<void()> onDestroy;
    std::function<void(char const* what)> onRead;
    mutable int asked = 0, descriptionsRead = 0;

private:
    ActionTraits _traits;
    std::vector<std::string>& _journal;
};

/// The descriptions of a query's result, with ":" and the target's text where it has one, and blanks between them.
inline std::string listed(Ko::ConstIterator<Ko::ActRegistry::Entry> const& entries) {
    std::string result;
    for (Ko::ActRegistry::Entry const& entry : entries.elements())
        result += (result.empty() ? "" : " ") + entry.getDescription() +
                  (valueOf(entry.getTarget()) == "?" ? "" : ":" + valueOf(entry.getTarget()));
    return result;
}

/// Fills the registry with recording actions, and empties it.
class WithActions {
public:
    WithActions() = default;
    WithActions(WithActions const&) = delete;
    WithActions& operator=(WithActions const&) = delete;
    virtual ~WithActions() {
        for (auto const* const action : _added)
            registry.unregisterAction(action);
    }

    RecordingAction* add(ActionTraits traits, Ko::ActRegistry::DynamicState state = Ko::ActRegistry::Static) {
        auto action = std::make_unique<RecordingAction>(std::move(traits), journal);
        _added.push_back(action.get());
        auto* const result = action.get();
        registry.registerAction(std::move(action), state);
        return result;
    }
    std::vector<std::string> takeJournal() { return std::exchange(journal, {}); }

    Ko::ActRegistry& registry = Ko::ActRegistry::getInstance();
    std::vector<std::string> journal;
    static constexpr auto first = Ko::ActRegistry::FirstOnly;
    static constexpr auto sorted = Ko::ActRegistry::AllSorted;

private:
    std::vector<Ko::ActAction const*> _added;
};

} // namespace KoTest
