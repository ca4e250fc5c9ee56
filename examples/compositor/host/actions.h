#pragma once

#include "host/editor.h"
#include "script/script.h"

#include <string>
#include <vector>

namespace compositor {

/// Registers every edit of documents as an action while it exists. One at a time, while the framework is initialised.
///
/// Actions on layers take a `LayerItem` as their target; what they need besides is a text, the arguments of a statement. The
/// blend modes are members of the composite action "Blend". Dropped and pasted layers come in a carrier.
class EditActions {
public:
    EditActions();
    ~EditActions();
    EditActions(EditActions const&) = delete;
    EditActions& operator=(EditActions const&) = delete;

    /// Performs an action on each of the layers, as one step of the history.
    /// @param path the description; for a member of a composite, "Composite > Member".
    /// @param arguments as the action expects them.
    /// @throws ScriptError when there is no such action for one of the layers, and what the action throws.
    static void perform(Editor& editor, std::string const& path, std::vector<Layer> const& layers,
        std::vector<std::string> const& arguments);
    /// Performs an action that needs no layer.
    static void perform(Editor& editor, std::string const& description, std::vector<std::string> const& arguments);
    /// The choices that an action offers for a layer.
    static std::vector<std::string> options(Editor& editor, std::string const& path, Layer const& layer);
};

} // namespace compositor
