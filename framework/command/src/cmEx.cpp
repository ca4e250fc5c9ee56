#include "framework/command/cmEx.h"

namespace Ko {

CmEx::CmEx(char const* file, int line) : ExBase(file, line) {}

CmEx::ExCommandFailure::ExCommandFailure(char const* file, int line) : CmEx(file, line) {
    setReason("Command un/execution failure.");
}
ExBase* CmEx::ExCommandFailure::clone() const {
    return copyOf(*this);
}
void CmEx::ExCommandFailure::raise() const {
    throw *this;
}

} // namespace Ko
