#include "resmgt/osSharedLib.h"

namespace Ko {

OsSharedLibEx::OsSharedLibEx(char const* file, int line, LiString reason) : ExBase(file, line, std::move(reason)) {}
ExBase* OsSharedLibEx::clone() const {
    return copyOf(*this);
}
void OsSharedLibEx::raise() const {
    throw *this;
}

} // namespace Ko
