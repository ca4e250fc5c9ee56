#include "base/inInitMgr.h"
#include "framework/plugInMgr/pimUtils.h"

#include <iostream>

using namespace Ko;

class Progress : public PimUtils::Callback {
public:
    void notifyLoading(OsFilePath const& path) override {
        std::cout << "loading " << path.getFileName().getPath() << '\n';
    }
};

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    Progress progress;
    int const present = PimUtils::loadType("tool", InInitMgr::Reinitialization, progress);
    std::cout << "plug-ins: " << present << '\n';
}
