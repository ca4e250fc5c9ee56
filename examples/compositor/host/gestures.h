#pragma once

#include "host/editor.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace compositor {

/// Operations with the mouse and the clipboard. Each edit is one undo step.
class Gestures {
public:
    explicit Gestures(Editor& editor) : _editor(editor) {}

    /// Selects these layers only. Without names, clears the selection.
    void select(std::vector<std::string> const& names);
    /// The selected layers that the document still contains, in their current state.
    [[nodiscard]] std::vector<Layer> selected() const;
    /// Writes the actions that are valid for the selected layers, or for the document when none is selected, by group. Members
    /// of a composite are indented below it.
    void showMenu(std::ostream& output) const;

    /// @throws ScriptError when nothing is selected.
    void copy();
    void cut();
    /// @throws ScriptError when the clipboard is empty.
    void paste();
    struct Point {
        int x;
        int y;
    };
    /// Drags a layer along a path: one long transaction with a guard for each point, and one undo step. Inside a group it
    /// is part of the step of that group.
    void dragAlong(std::string const& name, std::vector<Point> const& path);
    /// Drags layers and drops them on another one. @throws ScriptError when the target does not accept them.
    void drag(std::vector<std::string> const& names, std::string const& target);

private:
    void carrySelection(int action);

    Editor& _editor;
};

} // namespace compositor
