#pragma once

#include "framework/actions/actOption.h"
#include "host/editor.h"
#include "text/statement.h"

#include <string>
#include <vector>

namespace compositor {

/// Registers every edit of a document as an action, and unregisters them when it is destroyed. One object at a time, while the
/// framework is initialised.
///
/// The target of an action is a `LayerItem`, or an item with the editor; its input is a `StatementItem`. The blend modes are
/// members of the composite action "Blend". For drops and pasting the input is a carrier.
class EditActions {
public:
    EditActions();
    ~EditActions();
    EditActions(EditActions const&) = delete;
    EditActions& operator=(EditActions const&) = delete;

    /// Performs an action on each of the layers, as one undo step.
    /// @param path the description; for a member of a composite, "Composite > Member".
    /// @param arguments of the action, without its description.
    /// @throws InputError when the action is not valid for one of the layers. Exceptions of the action are passed on.
    static void perform(Editor& editor, std::string const& path, std::vector<Layer> const& layers,
        std::vector<std::string> const& arguments);
    /// Performs an action on the document.
    static void perform(Editor& editor, std::string const& description, std::vector<std::string> const& arguments);
    /// The choices that an action offers for all of the layers; current where all have them.
    [[nodiscard]] static std::vector<Ko::ActOption> options(
        Editor& editor, std::string const& path, std::vector<Layer> const& layers);
    /// A registered action. @throws InputError when there is none of that path.
    [[nodiscard]] static Ko::ActAction const& find(std::string const& path);
};

} // namespace compositor
