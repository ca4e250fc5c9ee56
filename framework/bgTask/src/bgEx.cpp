#include "framework/bgTask/bgEx.h"

#include "resmgt/msgServer.h"

namespace Ko {

namespace {

constexpr char const* managerError = "MSG_BG_MANAGER_ERROR";
constexpr char const* taskFailed = "MSG_BG_TASK_FAILED";

} // namespace

BgEx::BgEx(char const* file, int line) : ExBase(file, line) {}

void BgEx::initialize() {
    MsgServer::getInstance().subscribe(managerError);
    MsgServer::getInstance().subscribe(taskFailed);
}

void BgEx::finalize() {}

BgEx::ExBgManager::ExBgManager(char const* file, int line, LiString const& text) : BgEx(file, line) {
    setReason(MsgServer::getInstance().format(managerError, {text}));
}
ExBase* BgEx::ExBgManager::clone() const {
    return copyOf(*this);
}
void BgEx::ExBgManager::raise() const {
    throw *this;
}

BgEx::ExBgTaskFailed::ExBgTaskFailed(char const* file, int line, LiString const& text) : BgEx(file, line) {
    setReason(MsgServer::getInstance().format(taskFailed, {text}));
}
ExBase* BgEx::ExBgTaskFailed::clone() const {
    return copyOf(*this);
}
void BgEx::ExBgTaskFailed::raise() const {
    throw *this;
}

} // namespace Ko
