#include "resmgt/osFile.h"

namespace Ko {

OsFileEx::OsFileEx(char const* file, int line, char const* function, LiString const& problem)
    : ExBase(file, line, LiString(function) + ": " + problem) {}

OsFileEx::ExInvalidPath::ExInvalidPath(
    char const* file, int line, char const* function, OsFilePath const& path, LiString const& problem)
    : OsFileEx(file, line, function,
          "Invalid path \"" + path.getPath() + (problem.empty() ? "\"." : "\": " + problem + ".")) {}
ExBase* OsFileEx::ExInvalidPath::clone() const {
    return copyOf(*this);
}
void OsFileEx::ExInvalidPath::raise() const {
    throw *this;
}

} // namespace Ko
