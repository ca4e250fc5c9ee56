#include "host/editor.h"

#include "document/documentFile.h"
#include "framework/command/cmMerger.h"
#include "framework/command/cmUndoGuard.h"
#include "host/commands.h"
#include "image/inputFile.h"
#include "image/pngFile.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>

namespace compositor {

namespace {

constexpr std::chrono::seconds longestPauseOfNudges{2};

int nudged(int position, int distance) {
    std::int64_t const farthest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(std::int64_t{position} + distance, -farthest, farthest));
}

} // namespace

Editor::Editor() {
    _history->setMerger(Ko::CmMergerByTime::create(longestPauseOfNudges));
}

void Editor::open(std::filesystem::path const& path, std::string const& name) {
    InputFile file(path);
    auto const fail = [&path](
                          char const* reason) { throw DocumentError(path.string() + " cannot be opened: " + reason); };
    std::optional<Document> opened;
    try {
        if (isPng(file.stream)) return addLayer(name, readPng(file.stream, file.length));
        opened = readDocument(file.stream, file.length);
    } catch (std::bad_alloc const&) {
        fail("there is not enough memory");
    } catch (std::runtime_error const& error) {
        fail(error.what());
    }
    replace(std::move(*opened));
}

void Editor::startNew() {
    replace(Document());
}

void Editor::replace(Document document) {
    // First, since it is refused while a step is open.
    _history->setClean();
    _document = std::move(document);
    _history->clear();
    _selection->clear();
}

bool Editor::isTaken(std::string const& name) const {
    return std::ranges::any_of(_document.layers(), [&](Layer const& other) { return other.name == name; });
}

std::string Editor::freeName(std::string const& wanted) const {
    std::string name = wanted;
    for (int number = 2; isTaken(name); ++number)
        name = wanted + " " + std::to_string(number);
    return name;
}

void Editor::setCanvas(Size canvas) {
    checkSize(canvas);
    execute(makeSetCanvas(_document, canvas));
}

void Editor::addLayer(std::string const& name, Picture picture) {
    Layer layer{_document.newId(), name, {}};
    layer.placed.picture = std::make_shared<Picture const>(std::move(picture));
    _document.check(layer);
    execute(makeAddLayer(_document, std::move(layer)));
}

Layer Editor::addCopy(Layer const& layer) {
    Layer copy{_document.newId(), layer.name, layer.placed};
    for (int number = 1; isTaken(copy.name); ++number)
        copy.name = layer.name + " copy" + (number > 1 ? " " + std::to_string(number) : "");
    execute(makeAddLayer(_document, copy));
    return copy;
}

void Editor::removeLayer(LayerId id) {
    execute(makeRemoveLayer(_document, _document.layer(id)));
}

void Editor::reorderLayer(LayerId id, std::size_t index) {
    _document.checkIndex(index);
    execute(makeReorderLayer(_document, _document.layer(id), index));
}

void Editor::renameLayer(LayerId id, std::string const& newName) {
    Layer changed = _document.layer(id);
    std::string const description = "Rename " + changed.name;
    changed.name = newName;
    change(std::move(changed), description);
}

void Editor::moveLayer(LayerId id, int x, int y) {
    Layer changed = _document.layer(id);
    changed.placed.x = x;
    changed.placed.y = y;
    std::string const description = "Move " + changed.name;
    change(std::move(changed), description);
}

void Editor::nudgeLayer(LayerId id, int x, int y) {
    Layer changed = _document.layer(id);
    changed.placed.x = nudged(changed.placed.x, x);
    changed.placed.y = nudged(changed.placed.y, y);
    _document.check(changed);
    std::string const description = "Nudge " + changed.name;
    execute(makeNudgeLayer(_document, std::move(changed), description));
}

void Editor::setOpacity(LayerId id, float opacity) {
    Layer changed = _document.layer(id);
    changed.placed.opacity = opacity;
    std::string const description = "Opacity of " + changed.name;
    change(std::move(changed), description);
}

void Editor::setPicture(LayerId id, Picture picture, std::string const& description) {
    Layer changed = _document.layer(id);
    changed.placed.picture = std::make_shared<Picture const>(std::move(picture));
    change(std::move(changed), description);
}

void Editor::setBlend(LayerId id, BlendMode blend) {
    Layer changed = _document.layer(id);
    changed.placed.blend = blend;
    std::string const description = "Blend " + changed.name;
    change(std::move(changed), description);
}

void Editor::setVisible(LayerId id, bool isVisible) {
    Layer changed = _document.layer(id);
    changed.placed.isVisible = isVisible;
    std::string const description = (isVisible ? "Show " : "Hide ") + changed.name;
    change(std::move(changed), description);
}

int Editor::beginSave() {
    _history->setClean();
    return ++_lastSave;
}

void Editor::saveHasFailed(int number) {
    if (number == _lastSave) _history->resetClean();
}

void Editor::execute(Ko::RCShdPtr<Ko::CmCommand> const& command) {
    // Part of the step of an open guard, if there is one; otherwise a step with the description of the command.
    Ko::CmUndoGuard guard(_history, command->getDescription());
    guard.execAndAddUndoCommand(command);
}

void Editor::change(Layer changed, std::string const& description) {
    _document.check(changed);
    execute(makeChangeLayer(_document, std::move(changed), description));
}

} // namespace compositor
