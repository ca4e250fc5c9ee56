#include "base/inInitMgr.h"
#include "framework/bgTask/bgManager.h"
#include "framework/command/cmUndoGuard.h"
#include "resmgt/lkEvent.h"

#include <iostream>
#include <utility>

using namespace Ko;

/// Gives a layer another name.
class RenameCmd : public CmCommand {
public:
    RenameCmd(LiString& layer, LiString name) : _layer(layer), _otherName(std::move(name)) {}
    LiString getDescription() const override { return "Rename Layer"; }

protected:
    void executeInternal() override { _layer.swap(_otherName); }
    void unexecuteInternal() override { _layer.swap(_otherName); }

private:
    LiString& _layer;
    LiString _otherName;
};

/// Renders a picture on a worker, tile by tile.
class RenderJob : public BgJobProtocol {
public:
    explicit RenderJob(LkEvent& isDone) : BgJobProtocol("Render sky.png", "render"), _isDone(isDone) {}
    void execute() override {
        for (int tile = 0; tile < 100 && continueExecution(); ++tile)
            reportProgress(tile + 1, 100);
        _isDone.set();
    }

private:
    LkEvent& _isDone;
};

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    LiString background = "Layer 1", foreground = "Layer 2";
    auto const history = RCShdPtr<CmCommandStack>::create();
    {
        CmUndoGuard step(history, "Name the Layers");
        step.execAndAddUndoCommand(RCShdPtr<RenameCmd>::create(background, "Sky"));
        step.execAndAddUndoCommand(RCShdPtr<RenameCmd>::create(foreground, "Tree"));
    }
    std::cout << (*history->getCurrent())->getDescription() << ": " << background << ", " << foreground << '\n';
    history->undo();
    std::cout << "undone: " << background << ", " << foreground << '\n';

    LkEvent isDone("Rendered", false);
    auto const job = BgManager::getInstance().addJob(std::make_unique<RenderJob>(isDone));
    isDone.wait(); // here an application runs its loop
    std::cout << "rendered: " << job->getStatistics().progress() * 100 << "%\n";
    BgManager::getInstance().stopAndDeleteJob(job);
}
