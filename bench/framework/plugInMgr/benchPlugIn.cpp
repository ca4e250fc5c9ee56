// A small plug-in: one package that depends on others.
#include "framework/command/commandInit.h"
#include "framework/plugInMgr/plugInMgrInit.h"

namespace {

struct Tag {};

class Package final : public Ko::InInit<Tag> {
public:
    Package() : InInit("benchPlugIn", Ko::packagesOf<KoInit::command, KoInit::plugInMgr>()) {}
    void initialize() override { _work = 1; }
    void finalize() override { _work = 0; }

private:
    int _work = 0;
};

Package package;

} // namespace
