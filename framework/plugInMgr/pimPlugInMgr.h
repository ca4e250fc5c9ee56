#pragma once

#include "base/inInitMgr.h"
#include "framework/frameworkApi.h"
#include "resmgt/osFilePath.h"

namespace Ko {

/// Opens the libraries of plug-ins, each once. `PimUtils` finds and filters them; this is what it hands them to.
///
/// A plug-in is a shared library with packages of its own, which are initialised right after it has opened. It stays in
/// the process until that ends. Libraries are told apart by their file names, whatever their directories.
///
/// Any thread. One library is opened at a time; a plug-in may load further ones from the hooks of its packages.
class KO_FRAMEWORK_API PimPlugInMgr {
public:
    virtual ~PimPlugInMgr();
    PimPlugInMgr(PimPlugInMgr const&);
    PimPlugInMgr& operator=(PimPlugInMgr const&);

    /// The one of the process, made on first use.
    static PimPlugInMgr& getInstance();

    /// Opens a library and initialises its packages. When that fails, those that were initialised are finalised again, and
    /// the library counts as loaded all the same: it is not tried again.
    /// @param mode `InInitMgr::Recursive` from within a start-up, `InInitMgr::Reinitialization` after it.
    /// @throws PimEx::ExLibMultipleLoad when a library of that file name was loaded before, OsSharedLibEx when it cannot be
    ///   opened, what the hooks of its packages throw, and ExProgramAborted for any other mode.
    virtual void loadPlugIn(OsFilePath const& path, InInitMgr::InitType mode) = 0;
    /// Whether a library of that file name was loaded, or tried to.
    virtual bool isLoaded(OsFilePath const& path) = 0;

protected:
    PimPlugInMgr();
};

} // namespace Ko
