#include "host/editor.h"

#include "document/documentFile.h"
#include "framework/command/cmUndoGuard.h"
#include "host/commands.h"
#include "image/inputFile.h"
#include "image/pngFile.h"

#include <algorithm>

namespace compositor {

void Editor::open(std::filesystem::path const& path, std::string const& name) {
    InputFile file(path);
    auto const fail = [&path](
                          char const* reason) { throw DocumentError(path.string() + " cannot be opened: " + reason); };
    try {
        if (isPng(file.stream)) return addLayer(name, readPng(file.stream, file.length));
        _document = readDocument(file.stream, file.length);
    } catch (std::bad_alloc const&) {
        fail("there is not enough memory");
    } catch (std::runtime_error const& error) {
        fail(error.what());
    }
    _history->clear();
    _selection->clear();
}

void Editor::setCanvas(Size canvas) {
    checkSize(canvas);
    execute(makeSetCanvas(_document, canvas));
}

void Editor::addLayer(std::string const& name, Picture picture) {
    Layer layer{_document.newId(), name, {}};
    layer.placed.picture = std::make_shared<Picture const>(std::move(picture));
    Document(_document).insert(0, layer);
    execute(makeAddLayer(_document, std::move(layer)));
}

Layer Editor::addCopy(Layer const& layer) {
    auto const isTaken = [this](std::string const& name) {
        return std::ranges::any_of(_document.layers(), [&](Layer const& other) { return other.name == name; });
    };
    Layer copy{_document.newId(), layer.name, layer.placed};
    for (int number = 1; isTaken(copy.name); ++number)
        copy.name = layer.name + " copy" + (number > 1 ? " " + std::to_string(number) : "");
    execute(makeAddLayer(_document, copy));
    return copy;
}

void Editor::removeLayer(std::string const& name) {
    execute(makeRemoveLayer(_document, _document.layer(name)));
}

void Editor::reorderLayer(std::string const& name, std::size_t index) {
    Layer const& layer = _document.layer(name);
    Document(_document).reorder(layer.id, index);
    execute(makeReorderLayer(_document, layer, index));
}

void Editor::renameLayer(std::string const& name, std::string const& newName) {
    Layer changed = _document.layer(name);
    changed.name = newName;
    change(std::move(changed), "Rename " + name);
}

void Editor::moveLayer(std::string const& name, int x, int y) {
    Layer changed = _document.layer(name);
    changed.placed.x = x;
    changed.placed.y = y;
    change(std::move(changed), "Move " + name);
}

void Editor::setOpacity(std::string const& name, float opacity) {
    Layer changed = _document.layer(name);
    changed.placed.opacity = opacity;
    change(std::move(changed), "Opacity of " + name);
}

void Editor::setPicture(std::string const& name, Picture picture, std::string const& description) {
    Layer changed = _document.layer(name);
    changed.placed.picture = std::make_shared<Picture const>(std::move(picture));
    change(std::move(changed), description);
}

void Editor::setBlend(std::string const& name, BlendMode blend) {
    Layer changed = _document.layer(name);
    changed.placed.blend = blend;
    change(std::move(changed), "Blend " + name);
}

void Editor::execute(Ko::RCShdPtr<Ko::CmCommand> const& command) {
    // Joins the guard that is open, if any; the command's own description names the step otherwise.
    Ko::CmUndoGuard guard(_history, command->getDescription());
    guard.execAndAddUndoCommand(command);
}

// Tried on a copy first: a change that the document refuses is told in words and never becomes a command.
void Editor::change(Layer changed, std::string const& description) {
    Document(_document).replace(changed);
    execute(makeChangeLayer(_document, std::move(changed), description));
}

} // namespace compositor
