#pragma once

#include "host/editor.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace compositor {

/// What a user does with the mouse and the clipboard: each is one step of the history that can be undone.
class Gestures {
public:
    explicit Gestures(Editor& editor) : _editor(editor) {}

    /// Selects these layers and no others; none at all clears the selection.
    void select(std::vector<std::string> const& names);
    /// The selected layers that the document still has, as they are now.
    std::vector<Layer> selected() const;
    /// Shows the actions that are valid for the selected layers, or for the document when there are none; by group,
    /// composites with their members below them.
    void showMenu(std::ostream& output) const;

    /// @throws ScriptError when nothing is selected.
    void copy();
    void cut();
    /// @throws ScriptError when nothing was copied or cut.
    void paste();
    struct Point {
        int x;
        int y;
    };
    /// Drags a layer along a path: one long transaction, and one undo step, of as many guards as there are points. Inside a
    /// group it is part of that.
    void dragAlong(std::string const& name, std::vector<Point> const& path);
    /// Drags layers and drops them on another one. @throws ScriptError when nothing takes them there.
    void drag(std::vector<std::string> const& names, std::string const& target);

private:
    void carrySelection(int action);

    Editor& _editor;
};

} // namespace compositor
