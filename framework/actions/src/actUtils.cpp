#include "framework/actions/actUtils.h"

#include "base/assertions.h"
#include "framework/actions/actRegistry.h"
#include "framework/actions/src/actNoItems.h"

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

template <class Target>
ConstIterator<ActRegistry::Entry> validActions(Target const& target, RCShdPtr<SnItem const> const& input) {
    return ActRegistry::getInstance().getActions(target, input, "", ActRegistry::AllSorted);
}

using Matches = Vector<ActRegistry::Entry>;

Matches matchesOf(ConstIterator<ActRegistry::Entry> entries, PrdPredicate<ActAction> const& predicate) {
    Matches matches;
    for (; !entries.atEnd(); ++entries)
        if (predicate.test(*entries->getAction())) matches.push_back(*entries);
    return matches;
}

// All are found before one is performed, which may unregister the others.
bool execute(Matches const& matches, RCShdPtr<SnSelection> const& selection) {
    if (matches.empty()) return false;
    matches.front().performAction(selection);
    source.require(matches.size() == 1, "done == false", secondActionFound);
    return true;
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
    return execute(matchesOf(validActions(target, input), predicate), selection);
}
bool ActUtils::executeSingleAction(
    Items const& targets, PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection) {
    return executeSingleAction(targets, ActNoItems::create(), predicate, selection);
}
bool ActUtils::executeSingleAction(Items const& targets, RCShdPtr<SnItem const> const& input,
    PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection) {
    return execute(matchesOf(validActions(targets, input), predicate), selection);
}

bool ActUtils::hasSingleAction(RCShdPtr<SnItem const> const& target, PrdPredicate<ActAction> const& predicate) {
    return hasSingleAction(target, ActNoItems::create(), predicate);
}
bool ActUtils::hasSingleAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
    PrdPredicate<ActAction> const& predicate) {
    return matchesOf(validActions(target, input), predicate).size() == 1;
}
bool ActUtils::hasSingleAction(Items const& targets, PrdPredicate<ActAction> const& predicate) {
    return hasSingleAction(targets, ActNoItems::create(), predicate);
}
bool ActUtils::hasSingleAction(
    Items const& targets, RCShdPtr<SnItem const> const& input, PrdPredicate<ActAction> const& predicate) {
    return matchesOf(validActions(targets, input), predicate).size() == 1;
}

} // namespace Ko
