#pragma once

#include "framework/command/cmReplay.h"
#include "host/editor.h"

#include <iosfwd>
#include <optional>
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
    /// Presses the mouse on a layer: begins a long transaction, to which all edits belong until `release` or `cancel`.
    /// @throws DocumentError when there is no such layer.
    void grab(std::string const& name);
    /// Moves the layer that is dragged. @throws ScriptError when none is.
    void pull(Point to);
    /// Ends the drag as one undo step.
    void release();
    /// Takes the drag back. Document and history are as before `grab`, unless a command fails on the way.
    Ko::CmReplay cancel();
    /// Whether a layer is dragged.
    [[nodiscard]] bool isDragging() const { return _dragged.has_value(); }
    /// Drags a layer along a path, as one undo step. Inside a group or another drag it is part of that step.
    void dragAlong(std::string const& name, std::vector<Point> const& path);
    /// Drags layers and drops them on another one. @throws ScriptError when the target does not accept them.
    void drag(std::vector<std::string> const& names, std::string const& target);

private:
    struct Dragged {
        LayerId id;
        std::string description;
    };

    void carrySelection(int action);
    Dragged const& dragged() const;

    Editor& _editor;
    std::optional<Dragged> _dragged;
};

} // namespace compositor
