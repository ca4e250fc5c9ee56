#pragma once

#include "base/inInit.h"
#include "framework/actions/actRegistry.h"
#include "framework/actions/actionsInit.h"
#include "image/picture.h"
#include "script/script.h"

#include <functional>
#include <string>

namespace compositor {

/// What an action is called, and what it takes.
struct Verb {
    std::string description;
    std::string arguments; ///< As a message tells them: "a radius in pixels", "nothing".
    std::size_t fewest;
    std::size_t most;
};

/// Makes another picture of a layer's. @param input its word is the description; the arguments follow. What it throws is
/// told to the user: ScriptError for an argument, ImageError for a picture that cannot be made. The layer stays as it was then.
using Operator = Picture (*)(Picture const& picture, Statement const& input);

/// Makes the picture of a new layer. @param input without the name and size of the layer.
using Generator = Picture (*)(Size size, Statement const& input);

/// An action on layers, in the group "Operators": one undo step for all that are selected.
Ko::OPtr<Ko::ActAction> makeAction(Verb const& verb, Operator apply);
/// An action on the document, in the group "Generators". Before the generator's own arguments it takes the new layer's name,
/// width and height.
Ko::OPtr<Ko::ActAction> makeAction(Verb const& verb, Generator make);

/// The package of a plug-in with one action, which is registered while the package is initialised. A static object:
///
///     struct InvertTag {};
///     compositor::PlugIn<InvertTag> package("invert", {"Invert", "nothing", 0, 0}, invert);
///
/// An operator's file is named `<name>.op.so`, a generator's `<name>.gen.so`.
template <class Tag>
class PlugIn final : public Ko::InInit<Tag> {
public:
    template <class Function>
    PlugIn(char const* name, Verb verb, Function function)
        : Ko::InInit<Tag>(name, Ko::packagesOf<KoInit::actions>()),
          _make([verb = std::move(verb), function] { return makeAction(verb, function); }) {}

    void initialize() override {
        Ko::OPtr<Ko::ActAction> action = _make();
        _action = action.get();
        Ko::ActRegistry::getInstance().registerAction(std::move(action), Ko::ActRegistry::Static);
    }
    void finalize() override { Ko::ActRegistry::getInstance().unregisterAction(_action); }

private:
    std::function<Ko::OPtr<Ko::ActAction>()> _make;
    Ko::ActAction const* _action = nullptr;
};

} // namespace compositor
