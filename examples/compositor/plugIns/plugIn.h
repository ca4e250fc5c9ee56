#pragma once

#include "framework/frameworkLib/pimActions.h"
#include "image/picture.h"
#include "text/statement.h"

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
/// @throws InputError for a wrong argument, ImageError for a picture that cannot be made. The user sees the message, and the
/// layer is unchanged.
using Operator = Picture (*)(Picture const& picture, Statement const& input);

/// Makes the picture of a new layer. Throws like an `Operator`.
/// @param input the description of the action and the arguments after the name and size of the layer.
using Generator = Picture (*)(Size size, Statement const& input);

/// An action on layers, in the group "Operators".
[[nodiscard]] Ko::OPtr<Ko::ActAction> makeAction(Verb const& verb, Operator apply);
/// An action on the document, in the group "Generators". Its first arguments are the name, width and height of the new layer.
[[nodiscard]] Ko::OPtr<Ko::ActAction> makeAction(Verb const& verb, Generator make);

/// The package of a plug-in with one action. One line in the unnamed namespace declares it:
///
///     compositor::PlugIn<struct Invert> package("invert", {"Invert", "nothing", 0, 0}, invert);
///
/// `ko_add_plugin` builds an operator with the type "op", a generator with the type "gen".
template <class Tag>
class PlugIn final : public Ko::PimActions<Tag> {
public:
    template <class Function>
    PlugIn(char const* name, Verb const& verb, Function function)
        : Ko::PimActions<Tag>(name, {[verb, function] { return makeAction(verb, function); }}) {}
};

} // namespace compositor
