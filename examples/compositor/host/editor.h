#pragma once

#include "document/document.h"
#include "framework/command/cmCommandStack.h"
#include "internalAPI/snSelection.h"

#include <filesystem>
#include <string>
#include <vector>

namespace compositor {

/// One open document and its history. Every edit is an undo step of its own, or part of the open guard.
///
/// An edit that throws `DocumentError` or `ImageError` has changed nothing. To be used between the framework's initialisation
/// and finalisation, on the application thread.
class Editor {
public:
    Editor();
    Editor(Editor const&) = delete;
    Editor& operator=(Editor const&) = delete;

    [[nodiscard]] Document const& document() const { return _document; }
    [[nodiscard]] Ko::RCShdPtr<Ko::CmCommandStack> const& history() const { return _history; }
    /// The selected layers, as `LayerItem`s. The document may no longer contain some of them.
    [[nodiscard]] Ko::RCShdPtr<Ko::SnSelection> const& selection() const { return _selection; }
    /// Executes a command as an undo step of its own, or as part of the guard that is open.
    void execute(Ko::RCShdPtr<Ko::CmCommand> const& command);

    /// Replaces the document by that in the file and clears the history, or adds a picture file as a layer named `name`.
    /// @throws DocumentError or ImageError naming the path and the reason; Ko::ExInternalError for a document while a step is open.
    void open(std::filesystem::path const& path, std::string const& name);

    /// Replaces the document by one without layers and clears the history. @throws Ko::ExInternalError while a step is open.
    void startNew();
    /// A name that no layer has: the wanted one, or that with a number.
    [[nodiscard]] std::string freeName(std::string const& wanted) const;

    void setCanvas(Size canvas);
    void addLayer(std::string const& name, Picture picture);
    /// Adds a copy of a layer, which may belong to another document, on top, under a free name.
    /// @returns the new layer.
    Layer addCopy(Layer const& layer);
    void removeLayer(LayerId id);
    void reorderLayer(LayerId id, std::size_t index);
    void renameLayer(LayerId id, std::string const& newName);
    void moveLayer(LayerId id, int x, int y);
    /// Moves a layer by some pixels. Nudges that follow each other quickly are one undo step.
    void nudgeLayer(LayerId id, int x, int y);
    void setOpacity(LayerId id, float opacity);
    /// @param description of the undo step.
    void setPicture(LayerId id, Picture picture, std::string const& description);
    void setBlend(LayerId id, BlendMode blend);
    void setVisible(LayerId id, bool isVisible);

    /// Marks the present state as saved, when its copy is handed to a job that saves it. An edit while the job runs is then a change
    /// to the saved document, and undoing that edit leads back to it.
    /// @returns the number of this save.
    int beginSave();
    /// Takes the mark of a save back that has failed, unless a later one has set it again.
    void saveHasFailed(int number);

private:
    bool isTaken(std::string const& name) const;
    void replace(Document document);
    void change(Layer changed, std::string const& description);

    Document _document;
    Ko::RCShdPtr<Ko::CmCommandStack> _history = Ko::RCShdPtr<Ko::CmCommandStack>::create();
    Ko::RCShdPtr<Ko::SnSelection> _selection = Ko::SnSelection::create();
    int _lastSave = 0;
};

} // namespace compositor
