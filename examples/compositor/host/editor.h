#pragma once

#include "document/document.h"
#include "framework/command/cmCommandStack.h"
#include "internalAPI/snSelection.h"

#include <filesystem>
#include <string>
#include <vector>

namespace compositor {

/// One open document and its history. Every edit is an undo step of its own, or part of the guard that is open around it.
///
/// What an edit throws, `DocumentError` or `ImageError`, it throws before it changes anything. Between `Ko::InInitMgr`'s
/// initialise and finalise, on the application thread.
class Editor {
public:
    Editor() = default;
    Editor(Editor const&) = delete;
    Editor& operator=(Editor const&) = delete;

    Document const& document() const { return _document; }
    Ko::RCShdPtr<Ko::CmCommandStack> const& history() const { return _history; }
    /// The selected layers, as `LayerItem`s; some may have been removed meanwhile.
    Ko::RCShdPtr<Ko::SnSelection> const& selection() const { return _selection; }
    /// Executes a command as an undo step of its own, or as part of the guard that is open.
    void execute(Ko::RCShdPtr<Ko::CmCommand> const& command);

    /// Opens a document in place of this one, with a history of its own, or adds a picture as a layer named `name`.
    void open(std::filesystem::path const& path, std::string const& name);

    void setCanvas(Size canvas);
    void addLayer(std::string const& name, Picture picture);
    /// Adds a layer like another one on top, of this document or not, under a name that is free. @returns it.
    Layer addCopy(Layer const& layer);
    void removeLayer(std::string const& name);
    void reorderLayer(std::string const& name, std::size_t index);
    void renameLayer(std::string const& name, std::string const& newName);
    void moveLayer(std::string const& name, int x, int y);
    void setOpacity(std::string const& name, float opacity);
    /// @param description names the step.
    void setPicture(std::string const& name, Picture picture, std::string const& description);
    void setBlend(std::string const& name, BlendMode blend);

private:
    void change(Layer changed, std::string const& description);

    Document _document;
    Ko::RCShdPtr<Ko::CmCommandStack> _history = Ko::RCShdPtr<Ko::CmCommandStack>::create();
    Ko::RCShdPtr<Ko::SnSelection> _selection = Ko::SnSelection::create();
};

} // namespace compositor
