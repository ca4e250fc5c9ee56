#include "framework/command/src/cmUndoGuardFactory.h"

#include "base/assertions.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "framework/command/cmUndoGuardNoRedo.h"
#include "framework/command/src/cmScopeCommand.h"
#include "framework/command/src/cmUndoGuardStack.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmUndoGuardFactory"};

RCShdPtr<CmCommandStack> ownStack(RCShdPtr<PiCommandStack> const& stack) {
    OpenGuards::requireUsable();
    RCShdPtr<CmCommandStack> const own = stack.dynamicCast<CmCommandStack>();
    source.require(own.isNull() == stack.isNull(), "dynamic_cast<CmCommandStack*>(stack.get())");
    return own;
}

} // namespace

UndoGuardWithCb::UndoGuardWithCb(RCShdPtr<CmCommandStack> const& stack, LiString const& description,
    PiExecParam const& param, RCShdPtr<CbHandler<CbEmptyType>> const& callback)
    : CmUndoGuard(stack, description, param) {
    UndoGuardStack::getInstance().addOwnedEndCallback(callback);
}

void UndoGuardFactory::createUndoGuard(PiUndoGuardStorage& storage, RCShdPtr<PiCommandStack> const& stack,
    LiString const& description, PiExecParam const& param) const {
    storage.emplace<CmUndoGuard>(ownStack(stack), description, param);
}

void UndoGuardFactory::createUndoGuardWithCb(PiUndoGuardStorage& storage, RCShdPtr<PiCommandStack> const& stack,
    LiString const& description, PiExecParam const& param, RCShdPtr<CbHandler<CbEmptyType>> const& callback) const {
    storage.emplace<UndoGuardWithCb>(ownStack(stack), description, param, callback);
}

void UndoGuardFactory::createUndoGuardNoLog(PiUndoGuardStorage& storage, bool quiet) const {
    storage.emplace<CmUndoGuardNoLog>(quiet);
}

void UndoGuardFactory::createUndoGuardNoRedo(PiUndoGuardStorage& storage) const {
    storage.emplace<CmUndoGuardNoRedo>();
}

RCShdPtr<RCBase> UndoGuardFactory::beginScope(RCShdPtr<PiUndoScopeTarget> const& target) const {
    UndoGuardStack& guards = UndoGuardStack::getInstance();
    RCShdPtr<RCBase> endMark = ScopeCommand::create(target, true);
    guards.beginScope(ScopeCommand::create(target, false));
    return endMark;
}

void UndoGuardFactory::endScope(RCShdPtr<RCBase> const& endMark) const {
    UndoGuardStack::getInstance().endScope(endMark.dynamicCast<CmCommand>());
}

} // namespace Ko
