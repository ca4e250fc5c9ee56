#include "base/inInitMgr.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmUndoGuard.h"

#include <algorithm>
#include <iostream>
#include <utility>

using namespace Ko;

/// The document: layers by name, the lowest first, and where they lie.
struct Layer {
    LiString name;
    int x = 0;
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

/// Moves a layer. It names the layer by its place: a pointer would not survive that the layer goes and comes again.
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

/// A view, which is called when the document has changed.
class View : public CbHandler<CbEmptyType> {
public:
    View(Document const& document, CmCommandStack const& history) : _document(document), _history(history) {}

    void call(CbEmptyType const&) override {
        for (Layer const& layer : _document)
            std::cout << layer.name << '@' << layer.x << ' ';
        std::cout << "| undo: " << (*_history.getCurrent())->getDescription() << '\n';
    }

private:
    Document const& _document;
    CmCommandStack const& _history;
};

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

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    Document document;
    auto const history = RCShdPtr<CmCommandStack>::create();
    auto const view = RCShdPtr<View>::create(document, *history);
    history->addCommandProcessedCallback(view.get());

    addTwo(document, history, "Sky", "Tree");
    drag(document, history, 3, PiExecParam::BEGIN_TRANSITION);
    drag(document, history, 5, PiExecParam::TRANSITION);
    drag(document, history, 8, PiExecParam::END_TRANSITION);
    history->undo();
    history->redo();
    try {
        addTwo(document, history, "Grass", "Sky");
    } catch (CmEx::ExCommandFailure const&) {
        std::cout << "there is a Sky already\n";
        history->undo();
    }
    history->removeCommandProcessedCallback(view.get());
}
