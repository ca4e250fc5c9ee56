#pragma once

#include "base/exBase.h"
#include "resmgt/osFilePath.h"

namespace Ko {

/// A shared library could not be opened, or has no such symbol; the reason is what the system says, with the path.
class KO_RESMGT_API OsSharedLibEx : public ExBase {
public:
    OsSharedLibEx(char const* file, int line, LiString reason);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// A shared library that was opened while the process runs. The object is only a handle: a library stays in the process
/// until that ends, whatever becomes of its handles, since its code and its classes may be in use anywhere.
class KO_RESMGT_API OsSharedLib {
public:
    /// What the names of shared libraries end with: ".so", or ".dll" on Windows.
    static char const* getSuffix() noexcept;
    /// The least that a plug-in's file name ends with, after its type; here the same.
    static char const* getMinSuffix() noexcept;

    /// Opens the file, with everything that it needs, and runs the constructors of its static objects. A library that is
    /// open already is not opened again. The symbols of the library are visible to none but itself.
    /// @param path is only ever a file: a name without directory lies in the current one, not where the system has its
    ///   libraries.
    /// @throws OsSharedLibEx when it cannot be opened; then nothing of it was run.
    static OsSharedLib open(OsFilePath const& path);

    /// As it was opened.
    OsFilePath const& getPath() const noexcept { return _path; }
    /// The address of an exported function or object; cast it to what it is.
    /// @throws OsSharedLibEx when the library exports no such name.
    void* getSymbol(LiString const& name) const;

private:
    OsSharedLib(OsFilePath path, void* handle) : _path(std::move(path)), _handle(handle) {}

    OsFilePath _path;
    void* _handle;
};

} // namespace Ko
