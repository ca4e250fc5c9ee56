#pragma once

#include "framework/actions/actTypedAction.imp.h"
#include "host/layerItem.h"
#include "host/statementItem.h"
#include "plugIns/plugIn.h"

#include <functional>

namespace compositor {

/// An edit of its target, as an action. Its input is a statement: the description and the arguments. Menus show the
/// description, and the script word "do" finds the action by it.
template <class Target>
class Edit final : public Ko::ActTypedAction<Target, Statement> {
public:
    using Run = std::function<void(Target const& target, Statement const& input)>;
    using IsPossible = bool (*)(Target const& target);

    /// The place in menus.
    struct Place {
        char const* group;
        char const* composite = "";
    };

    Edit(Place place, Verb verb, IsPossible isPossible, Run run, std::vector<Ko::LiString> options = {})
        : _place(place), _verb(std::move(verb)), _isPossible(isPossible), _run(std::move(run)),
          _options(std::move(options)) {}

    Ko::LiString getDescription() const override { return _verb.description; }
    std::string getGroup() const override { return _place.group; }
    std::string getCompositeName() const override { return _place.composite; }
    bool inputValid(Target const& target, Statement const&) const override { return _isPossible(target); }
    void performAction(
        Target const& target, Statement const& input, Ko::RCShdPtr<Ko::SnSelection> const&) const override {
        // A menu performs an action without input.
        Statement const& statement = input.words.empty() ? Statement{0, {_verb.description}} : input;
        if (statement.arguments() < _verb.fewest || statement.arguments() > _verb.most)
            throw ScriptError("\"" + _verb.description + "\" takes " + _verb.arguments);
        _run(target, statement);
    }
    int enumOptions(Target const&, Statement const&, Ko::Vector<Ko::LiString>& options) const override {
        options.insert(options.end(), _options.begin(), _options.end());
        return static_cast<int>(_options.size());
    }

private:
    Place _place;
    Verb _verb;
    IsPossible _isPossible;
    Run _run;
    std::vector<Ko::LiString> _options;
};

/// Whether the document still contains the layer.
[[nodiscard]] bool exists(LayerRef const& ref);

} // namespace compositor
