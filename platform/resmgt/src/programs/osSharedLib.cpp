#include "resmgt/osSharedLib.h"

#include "resmgt/src/programs/librarySection.h"

namespace Ko {

namespace {

constexpr char const* source = "resmgt\\src\\osSharedLib";

} // namespace

OsSharedLibEx::OsSharedLibEx(char const* file, int line, LiString reason) : ExBase(file, line, std::move(reason)) {}
ExBase* OsSharedLibEx::clone() const {
    return copyOf(*this);
}
void OsSharedLibEx::raise() const {
    throw *this;
}

std::optional<LiString> OsSharedLib::readSection(OsFilePath const& path, LiString const& name, std::size_t limit) {
    if (path.hasZeroByte()) return std::nullopt;
    LibrarySection section = readLibrarySection(path, name, limit);
    LiString const subject = path.getPath() + ": the section " + name;
    switch (section.state) {
    case LibrarySection::State::Outside:
        throw OsSharedLibEx(source, __LINE__, subject + " lies outside of the file");
    case LibrarySection::State::TooLarge:
        throw OsSharedLibEx(source, __LINE__, subject + " is larger than " + std::to_string(limit) + " bytes");
    case LibrarySection::State::Complete:
        return std::move(section.bytes);
    default:
        return std::nullopt;
    }
}

} // namespace Ko
