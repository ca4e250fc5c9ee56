#pragma once

#include "base/exBase.h"
#include "resmgt/osFilePath.h"

#include <cstddef>
#include <optional>

namespace Ko {

/// A shared library cannot be opened, or has no such symbol; the reason is the path and the system's message.
class KO_RESMGT_API OsSharedLibEx : public ExBase {
public:
    /// As `ExBase`.
    OsSharedLibEx(char const* file, int line, LiString reason);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// A shared library that was opened while the process runs. The object is only a handle: the library stays in the process
/// until that ends, also without handles, since its code and its classes may be in use anywhere.
class KO_RESMGT_API OsSharedLib {
public:
    /// The suffix of the names of shared libraries: ".so", or ".dll" on Windows.
    [[nodiscard]] static char const* getSuffix() noexcept;
    /// The suffix of a plug-in's file name, after its type; the same on these systems.
    [[nodiscard]] static char const* getMinSuffix() noexcept;

    /// Opens the file and the libraries that it needs, and runs the constructors of their static objects. A library that is
    /// open already is not opened again. The symbols of the library are visible only to itself.
    /// @param path without a directory means a file in the current directory, not one in the system's folders for libraries.
    /// @throws OsSharedLibEx when it, or a library that it needs, cannot be opened, is cut off or damaged; then none of its
    ///   code was run.
    static OsSharedLib open(OsFilePath const& path);

    /// The content of a section of a library's file. The library is not opened: none of its code runs, and nothing outside of the
    /// file is read, whatever its headers claim.
    /// @param limit of the size in bytes.
    /// @returns nothing where the file has no section of that name. That includes files that are cut off or no libraries for this
    ///   system, which `open` refuses.
    /// @throws OsSharedLibEx when the section lies outside of the file, or is larger than the limit.
    [[nodiscard]] static std::optional<LiString> readSection(
        OsFilePath const& path, LiString const& name, std::size_t limit);

    /// The path with which it was opened.
    [[nodiscard]] OsFilePath const& getPath() const noexcept { return _path; }
    /// The address of an exported function or object, to be cast to its type.
    /// @throws OsSharedLibEx when the library exports no such name.
    [[nodiscard]] void* getSymbol(LiString const& name) const;

private:
    OsSharedLib(OsFilePath path, void* handle) : _path(std::move(path)), _handle(handle) {}

    OsFilePath _path;
    void* _handle;
};

} // namespace Ko
