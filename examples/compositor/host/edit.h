#pragma once

#include "framework/actions/actBasicParam.h"
#include "framework/actions/actTypedAction.imp.h"
#include "host/layerItem.h"
#include "plugIns/plugIn.h"

#include <functional>

namespace compositor {

/// An edit of what its target names, under a description that "menu" lists and "do" takes. Its input is a text: the arguments.
template <class Target>
class Edit final : public Ko::ActTypedAction<Target, Ko::ActBasicParam> {
public:
    using Run = std::function<void(Target const& target, Statement const& input)>;
    using IsPossible = bool (*)(Target const& target);

    /// Where a menu shows it.
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
    bool inputValid(Target const& target, Ko::ActBasicParam const&) const override { return _isPossible(target); }
    void performAction(
        Target const& target, Ko::ActBasicParam const& input, Ko::RCShdPtr<Ko::SnSelection> const&) const override {
        _run(target, parse(input.getValue()));
    }
    int enumOptions(Target const&, Ko::ActBasicParam const&, Ko::Vector<Ko::LiString>& options) const override {
        options.insert(options.end(), _options.begin(), _options.end());
        return static_cast<int>(_options.size());
    }

private:
    Statement parse(std::string const& input) const {
        Statement statement{0, splitWords(input)};
        statement.words.insert(statement.words.begin(), _verb.description);
        if (statement.arguments() < _verb.fewest || statement.arguments() > _verb.most)
            throw ScriptError("\"" + _verb.description + "\" takes " + _verb.arguments);
        return statement;
    }

    Place _place;
    Verb _verb;
    IsPossible _isPossible;
    Run _run;
    std::vector<Ko::LiString> _options;
};

/// Whether its document still has that layer.
bool exists(LayerRef const& ref);

} // namespace compositor
