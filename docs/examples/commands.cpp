#include "base/inInitMgr.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmHistoryChange.h"
#include "framework/command/cmMerger.h"
#include "framework/command/cmSized.h"
#include "framework/command/cmUndoGuard.h"

#include <algorithm>
#include <iostream>
#include <utility>

using namespace Ko;

/// The document: layers by name, the lowest first, with their positions and pixels.
struct Layer {
    LiString name;
    int x = 0;
    Vector<char> pixels{};
};
using Document = Vector<Layer>;

/// Puts a layer on top of the others.
class AddLayerCmd : public CmCommand {
public:
    static RCShdPtr<AddLayerCmd> create(Document& document, LiString name) {
        return RCShdPtr<AddLayerCmd>::create(document, std::move(name));
    }
    AddLayerCmd(Document& document, LiString name) : _document(document), _name(std::move(name)) {}

    LiString getDescription() const override { return "Add Layer"; }

protected:
    void executeInternal() override {
        bool const isTaken = std::ranges::count(_document, _name, &Layer::name) > 0;
        if (isTaken) throw CmEx::ExCommandFailure("addLayer", __LINE__);
        _document.push_back({_name});
    }
    void unexecuteInternal() override { _document.pop_back(); }

private:
    Document& _document;
    LiString _name;
};

/// Moves a layer. Refers to the layer by its place: a pointer would be invalid once the layer was removed and restored.
class MoveLayerCmd : public CmCommand {
public:
    static RCShdPtr<MoveLayerCmd> create(Document& document, std::size_t place, int x) {
        return RCShdPtr<MoveLayerCmd>::create(document, place, x);
    }
    MoveLayerCmd(Document& document, std::size_t place, int x) : _document(document), _place(place), _otherX(x) {}

    LiString getDescription() const override { return "Move Layer"; }

protected:
    void executeInternal() override { std::swap(_document.at(_place).x, _otherX); }
    void unexecuteInternal() override { std::swap(_document.at(_place).x, _otherX); }

private:
    Document& _document;
    std::size_t _place;
    int _otherX;
};

/// Moves a layer by some pixels, as an arrow key does. Takes up further nudges of the same layer.
class NudgeLayerCmd : public CmCommand, public CmMergeable {
public:
    static RCShdPtr<NudgeLayerCmd> create(Document& document, std::size_t place, int distance) {
        return RCShdPtr<NudgeLayerCmd>::create(document, place, distance);
    }
    NudgeLayerCmd(Document& document, std::size_t place, int distance)
        : _document(document), _place(place), _distance(distance) {}

    LiString getDescription() const override { return "Nudge Layer"; }
    void const* getMergeTarget() const override { return &_document; }
    bool absorb(CmCommand const& later) override {
        auto const& next = static_cast<NudgeLayerCmd const&>(later);
        if (next._place != _place) return false;
        _distance += next._distance;
        return true;
    }

protected:
    void executeInternal() override { _document.at(_place).x += _distance; }
    void unexecuteInternal() override { _document.at(_place).x -= _distance; }

private:
    Document& _document;
    std::size_t _place;
    int _distance;
};

/// Replaces the pixels of a layer, and keeps those that the document does not show.
class PaintLayerCmd : public CmCommand, public CmSized {
public:
    static RCShdPtr<PaintLayerCmd> create(Document& document, std::size_t place, Vector<char> pixels) {
        return RCShdPtr<PaintLayerCmd>::create(document, place, std::move(pixels));
    }
    PaintLayerCmd(Document& document, std::size_t place, Vector<char> pixels)
        : _document(document), _place(place), _otherPixels(std::move(pixels)) {}

    LiString getDescription() const override { return "Paint Layer"; }
    std::size_t getMemorySize() const noexcept override { return _otherPixels.capacity(); }

protected:
    void executeInternal() override { _document.at(_place).pixels.swap(_otherPixels); }
    void unexecuteInternal() override { _document.at(_place).pixels.swap(_otherPixels); }

private:
    Document& _document;
    std::size_t _place;
    Vector<char> _otherPixels;
};

/// A list of the steps, as a panel shows it. It reads the history only through its changes.
class Panel {
public:
    explicit Panel(CmCommandStack& history)
        : _changes(history.onHistoryChange([this](CmHistoryChange const& change) { apply(change); })) {}

    void show() const {
        for (std::size_t row = 0; row < _rows.size(); ++row)
            std::cout << (row == _current ? "> " : "  ") << _rows[row] << '\n';
    }

private:
    void apply(CmHistoryChange const& change) {
        for (CmHistorySplice const& splice : change.splices) {
            auto const first = _rows.begin() + splice.first;
            auto const next = _rows.erase(first, first + splice.numRemoved);
            // Only the logged step is ever inserted.
            if (splice.numInserted > 0) _rows.insert(next, change.logged->getDescription());
        }
        _current = static_cast<std::size_t>(change.current);
    }

    Vector<LiString> _rows{"Initial State"};
    std::size_t _current = 0;
    CbSubscription _changes;
};

void show(Document const& document) {
    char const* separator = "";
    for (Layer const& layer : document)
        std::cout << std::exchange(separator, ", ") << layer.name << " at " << layer.x;
    std::cout << '\n';
}

/// One step for the user, of two commands.
void addTwo(Document& document, RCShdPtr<CmCommandStack> const& history, LiString const& low, LiString const& high) {
    CmUndoGuard step(history, "Add " + low + " and " + high);
    step.execAndAddUndoCommand(AddLayerCmd::create(document, low));
    step.execAndAddUndoCommand(AddLayerCmd::create(document, high));
}

/// One event of the mouse while the button is down.
void drag(Document& document, RCShdPtr<CmCommandStack> const& history, int x, PiExecParam const& part) {
    CmUndoGuard step(history, "Drag Layer", part);
    step.execAndAddUndoCommand(MoveLayerCmd::create(document, 0, x));
}

// The user drags a layer while a job computes its outline.
void dragWithAResult(Document& document, RCShdPtr<CmCommandStack> const& history) {
    drag(document, history, 20, PiExecParam::BEGIN_TRANSITION);
    // The result of the job arrives as an event.
    CmUndoGuard::callOutside([&document, history] {
        CmUndoGuard step(history, "Add Outline");
        step.execAndAddUndoCommand(AddLayerCmd::create(document, "Outline"));
    });
    drag(document, history, 30, PiExecParam::TRANSITION);
    show(document);
    drag(document, history, 40, PiExecParam::END_TRANSITION);
    show(document);
}

// A step of two commands, or none.
void addBoth(Document& document, RCShdPtr<CmCommandStack> const& history, LiString const& low, LiString const& high) {
    CmUndoGuard step(history, "Add " + low + " and " + high);
    try {
        step.execAndAddUndoCommand(AddLayerCmd::create(document, low));
        step.execAndAddUndoCommand(AddLayerCmd::create(document, high));
    } catch (CmEx::ExCommandFailure const&) {
        step.rollBack();
        std::cout << "there is a " << high << " already\n";
    }
}

void undoWithAnAnswer(CmCommandStack& history) {
    LiString const step = history.getUndoText();
    CmReplay const result = history.tryUndo();
    if (result.outcome == CmReplay::Outcome::Done) std::cout << step << " is undone\n";
    if (result.outcome == CmReplay::Outcome::NothingToDo) std::cout << "there is nothing to undo\n";
    if (result.outcome == CmReplay::Outcome::Failed)
        std::cout << step << ": " << result.error->getReason() << " Dropped: " << result.numDropped << '\n';
}

void editAndUndo(Document& document, RCShdPtr<CmCommandStack> const& history) {
    CbSubscription const view = history->onCommandProcessed([&document] { show(document); });
    addTwo(document, history, "Sky", "Tree");
    drag(document, history, 3, PiExecParam::BEGIN_TRANSITION);
    drag(document, history, 5, PiExecParam::TRANSITION);
    drag(document, history, 8, PiExecParam::END_TRANSITION);
    history->undo();
    history->redo();
}

void nudgeAndSave(Document& document, RCShdPtr<CmCommandStack> const& history) {
    history->setMerger(CmMergerByTime::create());
    CbSubscription const title =
        history->onCleanChange([&] { std::cout << (history->isClean() ? "my picture\n" : "my picture *\n"); });
    history->setClean();
    for (int key = 0; key < 3; ++key)
        history->executeAndLog(NudgeLayerCmd::create(document, 0, 1));
    show(document);
    history->undo();
    show(document);
}

void paint(Document& document, RCShdPtr<CmCommandStack> const& history) {
    history->setMaxMemory(2500);
    for (int stroke = 0; stroke < 4; ++stroke)
        history->executeAndLog(PaintLayerCmd::create(document, 0, Vector<char>(1000)));
    std::cout << history->getMemory() << " bytes in " << history->getNbUndoableCommands() << " steps\n";
}

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    Document document;
    auto const history = RCShdPtr<CmCommandStack>::create();
    Panel const panel(*history);

    editAndUndo(document, history);
    addBoth(document, history, "Grass", "Sky");
    nudgeAndSave(document, history);
    drag(document, history, 99, PiExecParam::BEGIN_TRANSITION);
    CmUndoGuard::abandonLongTransition();
    show(document);
    dragWithAResult(document, history);
    panel.show();
    undoWithAnAnswer(*history);
    paint(document, history);
    panel.show();
}
