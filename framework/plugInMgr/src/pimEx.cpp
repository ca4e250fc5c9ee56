#include "framework/plugInMgr/pimEx.h"

namespace Ko {

PimEx::PimEx(char const* file, int line) : ExBase(file, line) {}

PimEx::ExLibMultipleLoad::ExLibMultipleLoad(char const* file, int line, OsFilePath const& path) : PimEx(file, line) {
    setReason("Library \"" + path.getPath() + "\" already loaded.");
}
ExBase* PimEx::ExLibMultipleLoad::clone() const {
    return copyOf(*this);
}
void PimEx::ExLibMultipleLoad::raise() const {
    throw *this;
}

PimEx::ExRefused::ExRefused(char const* file, int line, LiString reason) : PimEx(file, line) {
    setReason(std::move(reason));
}
ExBase* PimEx::ExRefused::clone() const {
    return copyOf(*this);
}
void PimEx::ExRefused::raise() const {
    throw *this;
}

} // namespace Ko
