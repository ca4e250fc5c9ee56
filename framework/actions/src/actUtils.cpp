#include "framework/actions/actUtils.h"

#include "base/assertions.h"
#include "framework/actions/src/actNoItems.h"
#include "framework/actions/src/actRecords.h"

#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\actions\\src\\actUtils"};
constexpr int secondActionFound = 116;

class DescMatchesPred final : public PrdPredicateImp<ActAction> {
public:
    explicit DescMatchesPred(LiString text) : _text(std::move(text)) {}
    bool test(ActAction const& action) const override { return action.getDescription() == _text; }

private:
    LiString _text;
};

class DescHasPred final : public PrdPredicateImp<ActAction> {
public:
    explicit DescHasPred(LiString text) : _text(std::move(text)) {}
    bool test(ActAction const& action) const override { return action.getDescription().find(_text) != LiString::npos; }

private:
    LiString _text;
};

/// The top-level actions that are valid for one or several targets, sorted. Actions may be registered and unregistered
/// during the walk through them; unregistered ones are left out.
class ValidActions {
public:
    template <class Target>
    ValidActions(Target const& target, RCShdPtr<SnItem const> const& input)
        : _entries(ActRegistry::getInstance().getActions(target, input, "", ActRegistry::AllSorted)) {}

    template <class Visit>
    void forEachMatching(PrdPredicate<ActAction> const& predicate, Visit visit) {
        for (ActRegistry::Entry const& entry : _entries.elements())
            if (matches(entry.getAction(), predicate)) visit(entry);
    }

private:
    bool matches(ActAction const* action, PrdPredicate<ActAction> const& predicate) {
        if (!_hold.isRegistered(action)) return false;
        ActPerforming const asked(action);
        return predicate.test(*action) && _hold.isRegistered(action);
    }

    ActRecords::Hold _hold{ActRecords::get()};
    ConstIterator<ActRegistry::Entry> _entries;
};

bool execute(ValidActions actions, PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection) {
    bool done = false;
    actions.forEachMatching(predicate, [&](ActRegistry::Entry const& entry) {
        source.require(!done, "done == false", secondActionFound);
        done = true;
        entry.performAction(selection);
    });
    return done;
}

bool isSingle(ValidActions actions, PrdPredicate<ActAction> const& predicate) {
    int count = 0;
    actions.forEachMatching(predicate, [&](ActRegistry::Entry const&) { ++count; });
    return count == 1;
}

} // namespace

PrdPredicate<ActAction> ActUtils::descMatches(LiString const& text) {
    return PrdPredicate<ActAction>(RCShdPtr<DescMatchesPred>::create(text));
}
PrdPredicate<ActAction> ActUtils::descHas(LiString const& text) {
    return PrdPredicate<ActAction>(RCShdPtr<DescHasPred>::create(text));
}

bool ActUtils::executeSingleAction(RCShdPtr<SnItem const> const& target, PrdPredicate<ActAction> const& predicate,
    RCShdPtr<SnSelection> const& selection) {
    return executeSingleAction(target, ActNoItems::create(), predicate, selection);
}
bool ActUtils::executeSingleAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
    PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection) {
    return execute({target, input}, predicate, selection);
}
bool ActUtils::executeSingleAction(
    Items const& targets, PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection) {
    return executeSingleAction(targets, ActNoItems::create(), predicate, selection);
}
bool ActUtils::executeSingleAction(Items const& targets, RCShdPtr<SnItem const> const& input,
    PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection) {
    return execute({targets, input}, predicate, selection);
}

bool ActUtils::hasSingleAction(RCShdPtr<SnItem const> const& target, PrdPredicate<ActAction> const& predicate) {
    return hasSingleAction(target, ActNoItems::create(), predicate);
}
bool ActUtils::hasSingleAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
    PrdPredicate<ActAction> const& predicate) {
    return isSingle({target, input}, predicate);
}
bool ActUtils::hasSingleAction(Items const& targets, PrdPredicate<ActAction> const& predicate) {
    return hasSingleAction(targets, ActNoItems::create(), predicate);
}
bool ActUtils::hasSingleAction(
    Items const& targets, RCShdPtr<SnItem const> const& input, PrdPredicate<ActAction> const& predicate) {
    return isSingle({targets, input}, predicate);
}

} // namespace Ko
