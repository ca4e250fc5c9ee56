#pragma once

#include "base/inInit.h"
#include "framework/actions/actRegistry.h"
#include "framework/actions/actionsInit.h"
#include "image/picture.h"
#include "script/script.h"

#include <functional>
#include <string>

namespace compositor {

/// The description of an action and the arguments that it takes.
struct Verb {
    std::string description;
    std::string arguments; ///< For messages: "a radius in pixels", "nothing".
    std::size_t fewest;
    std::size_t most;
};

/// Makes a new picture from that of a layer.
/// @param input the description of the action and the arguments.
/// @throws ScriptError for a wrong argument, ImageError for a picture that cannot be made. The user sees the message, and the
/// layer is unchanged.
using Operator = Picture (*)(Picture const& picture, Statement const& input);

/// Makes the picture of a new layer. Throws like an `Operator`.
/// @param input the description of the action and the arguments after the name and size of the layer.
using Generator = Picture (*)(Size size, Statement const& input);

/// An action on layers, in the group "Operators".
[[nodiscard]] Ko::OPtr<Ko::ActAction> makeAction(Verb const& verb, Operator apply);
/// An action on the document, in the group "Generators". Its first arguments are the name, width and height of the new layer.
[[nodiscard]] Ko::OPtr<Ko::ActAction> makeAction(Verb const& verb, Generator make);

/// The package of a plug-in with one action, which is registered while the package is initialised. Define one static object:
///
///     struct InvertTag {};
///     compositor::PlugIn<InvertTag> package("invert", {"Invert", "nothing", 0, 0}, invert);
///
/// The file of an operator is named `<name>.op.so`, a generator's `<name>.gen.so`.
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
