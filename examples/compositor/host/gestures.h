#pragma once

#include "framework/command/cmReplay.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "framework/dragAndDrop/drEffect.h"
#include "host/editor.h"
#include "host/layerItem.h"
#include "host/longStep.h"

#include <memory>
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
    /// The selected layers as targets of actions, or the document when none is selected.
    [[nodiscard]] Targets targets() const;

    /// @throws InputError when nothing is selected.
    void copy();
    void cut();
    /// @throws InputError when the clipboard is empty.
    void paste();
    /// Adds copies of carried layers to the document. @throws InputError when there are none.
    void add(Ko::RCShdPtr<Ko::DrCarrier> const& carrier, std::string const& description);
    struct Point {
        int x;
        int y;
    };
    /// Presses the mouse on a layer: begins a long transaction, to which all edits belong until `release` or `cancel`.
    /// @throws DocumentError when there is no such layer.
    void grab(std::string const& name);
    /// Presses the mouse on the first of these layers; the others are dragged along.
    void grab(std::vector<std::string> const& names);
    /// Moves the layer that is dragged to a place, and the others by the same distance. @throws InputError when none is.
    void pull(Point to);
    /// Ends the drag as one undo step.
    void release();
    /// Takes the drag back. Document and history are as before `grab`, unless a command fails on the way.
    Ko::CmReplay cancel();
    /// Whether a layer is dragged.
    [[nodiscard]] bool isDragging() const { return _dragged != nullptr; }
    /// Drags a layer along a path, as one undo step. Inside a group or another drag it is part of that step.
    void dragAlong(std::string const& name, std::vector<Point> const& path);
    /// Drags layers and drops them on another one.
    /// @returns what has happened; layers cannot be linked, so a link becomes a copy.
    /// @throws InputError when the target does not accept them.
    Ko::DrEffect drag(std::vector<std::string> const& names, std::string const& target, Ko::DrEffect wanted);

private:
    struct Dragged {
        Dragged(Editor& editor, std::vector<Layer> grabbed, std::string description)
            : layers(std::move(grabbed)), step(editor, std::move(description)) {}

        // As they were when they were grabbed.
        std::vector<Layer> layers;
        LongStep step;
    };

    void carrySelection(int action);
    Dragged& dragged();

    Editor& _editor;
    std::unique_ptr<Dragged> _dragged;
};

} // namespace compositor
