#include "base/inInitMgr.h"
#include "framework/plugInMgr/pimUtils.h"

#include <iostream>

using namespace Ko;

class Progress : public PimUtils::Callback {
public:
    void notifyLoading(OsFilePath const& path) override {
        std::cout << "loading " << path.getFileName().getPath() << '\n';
    }
    void notifyRefused(OsFilePath const& path, PimStage stage, ExBase const& error) override {
        if (stage == PimStage::Refused) std::cout << path.getFileName().getPath() << ": " << error.getReason() << '\n';
    }
};

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    PimUtils::setInterface("workshop 1.2");
    Progress progress;
    int const present = PimUtils::loadType("tool", InInitMgr::Reinitialization, progress);
    std::cout << "plug-ins: " << present << '\n';
    for (PimFinding const& file : PimUtils::getReport().plugIns) {
        std::cout << file.path.getFileName().getPath() << ": "
                  << (file.stage == PimStage::Loaded ? "loaded" : "not loaded");
        if (file.declaration) std::cout << ", version " << file.declaration->version;
        std::cout << '\n';
    }
}
