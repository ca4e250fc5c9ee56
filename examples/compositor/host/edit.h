#pragma once

#include "framework/actions/actOption.h"
#include "framework/actions/actPresentation.h"
#include "framework/actions/actTypedAction.imp.h"
#include "host/layerItem.h"
#include "host/statementItem.h"
#include "plugIns/plugIn.h"

#include <functional>
#include <string>
#include <vector>

namespace compositor {

/// An edit, whatever its target is: for dialogs that ask for its arguments.
class AnyEdit {
public:
    virtual ~AnyEdit() = default;
    [[nodiscard]] virtual Verb const& verb() const = 0;
};

/// An edit of its target, as an action. Its input is a statement: the description and the arguments. Menus show the
/// description, by which the action is found too.
template <class Target>
class Edit final : public Ko::ActTypedAction<Target, Statement>,
                   public Ko::ActPresented,
                   public Ko::ActOptioned,
                   public AnyEdit {
public:
    using Item = Ko::RCShdPtr<Ko::SnItem const>;
    using Run = std::function<void(Target const& target, Statement const& input)>;
    /// Why the edit is not possible; empty where it is.
    using WhyNot = std::function<std::string(Target const& target)>;

    /// The place in menus.
    struct Place {
        char const* group;
        char const* composite = "";
        Ko::ActPresentation shown = {};
    };
    /// What some edits have: a check mark, choices of their argument, and which of them a target has now.
    struct State {
        std::function<bool(Target const& target)> isChecked = {};
        std::vector<std::string> options = {};
        std::function<bool(Target const& target, std::string const& option)> isCurrent = {};
    };

    Edit(Place place, Verb verb, WhyNot whyNot, Run run, State state = {})
        : _place(std::move(place)), _verb(std::move(verb)), _whyNot(std::move(whyNot)), _run(std::move(run)),
          _state(std::move(state)) {}

    Verb const& verb() const override { return _verb; }
    Ko::LiString getDescription() const override { return _verb.description; }
    std::string getGroup() const override { return _place.group; }
    std::string getCompositeName() const override { return _place.composite; }
    bool inputValid(Target const& target, Statement const&) const override { return _whyNot(target).empty(); }
    void performAction(
        Target const& target, Statement const& input, Ko::RCShdPtr<Ko::SnSelection> const&) const override {
        // A menu performs an action without input.
        Statement const& statement = input.words.empty() ? Statement{0, {_verb.description}} : input;
        if (statement.arguments() < _verb.fewest || statement.arguments() > _verb.most)
            throw InputError("\"" + _verb.description + "\" takes " + _verb.arguments);
        _run(target, statement);
    }
    Ko::ActPresentation getPresentation(Item const& target, Item const&) const override {
        Ko::ActPresentation shown = _place.shown;
        if (_verb.fewest > 0 && shown.inputKind == Ko::ActInputKind::None)
            shown.inputKind = _state.options.empty() ? Ko::ActInputKind::Text : Ko::ActInputKind::Choice;
        shown.isCheckable = _state.isChecked != nullptr;
        if (!Ko::SnItemConvert<Target>::test(target)) return shown;
        Target const value = Ko::SnItemConvert<Target>::get(target);
        shown.whyNot = _whyNot(value);
        shown.isChecked = shown.isCheckable && shown.whyNot.empty() && _state.isChecked(value);
        return shown;
    }
    Ko::Vector<Ko::ActOption> getOptions(Item const& target) const override {
        Ko::Vector<Ko::ActOption> options;
        if (!Ko::SnItemConvert<Target>::test(target)) return options;
        Target const value = Ko::SnItemConvert<Target>::get(target);
        for (std::string const& option : _state.options)
            options.push_back({option, StatementItem::create({0, {_verb.description, option}}),
                _state.isCurrent && _state.isCurrent(value, option)});
        return options;
    }

private:
    Place _place;
    Verb _verb;
    WhyNot _whyNot;
    Run _run;
    State _state;
};

/// Why a layer cannot be edited: the document does not contain it any more.
[[nodiscard]] std::string whyNotEdited(LayerRef const& ref);

} // namespace compositor
