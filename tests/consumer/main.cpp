#include "base/inInitMgr.h"
#include "framework/command/cmCommandStackManager.h"
#include "framework/command/cmUndoGuard.h"

#include <iostream>
#include <string>

#if STANDARD > 20
static_assert(__cplusplus > 202002L, "the flags of the library must not set another standard");
#endif

namespace {

class AddCmd : public Ko::CmCommand {
public:
    AddCmd(int& sum, int summand) : _sum(sum), _summand(summand) {}
    Ko::LiString getDescription() const override { return "Add " + std::to_string(_summand); }

protected:
    void executeInternal() override { _sum += _summand; }
    void unexecuteInternal() override { _sum -= _summand; }

private:
    int& _sum;
    int _summand;
};

} // namespace

int main(int argc, char** argv) {
    Ko::InInitScope const framework(argc, argv);
    auto const stack = Ko::RCShdPtr<Ko::CmCommandStack>::create();
    Ko::CmCommandStackManager::getInstance().set(stack);
    int sum = 1;
    {
        Ko::CmUndoGuard guard(stack, "");
        guard.execAndAddUndoCommand(Ko::RCShdPtr<AddCmd>::create(sum, 2));
        guard.execAndAddUndoCommand(Ko::RCShdPtr<AddCmd>::create(sum, 4));
    }
    std::cout << (*stack->getCurrent())->getDescription() << " = " << sum;
    stack->undo();
    std::cout << ", undone = " << sum << '\n';
    Ko::CmCommandStackManager::getInstance().set(nullptr);
}
