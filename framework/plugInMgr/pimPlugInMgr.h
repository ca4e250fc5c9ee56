#pragma once

#include "base/inInitMgr.h"
#include "framework/frameworkApi.h"
#include "resmgt/osFilePath.h"

namespace Ko {

/// Opens the libraries of plug-ins, each once. `PimUtils` finds and filters them, and passes them on to this class.
///
/// A plug-in is a shared library with packages of its own, which are initialised right after the library has opened. It
/// stays in the process until that ends. Libraries are identified by their file names, whatever their directories.
///
/// Any thread. One library is opened at a time, and the hooks of its packages run on the thread that opens it; they may
/// load further plug-ins.
class KO_FRAMEWORK_API PimPlugInMgr {
public:
    virtual ~PimPlugInMgr();
    PimPlugInMgr(PimPlugInMgr const&);
    PimPlugInMgr& operator=(PimPlugInMgr const&);

    /// The manager of the process, created on first use.
    [[nodiscard]] static PimPlugInMgr& getInstance();

    /// Opens a library and initialises its packages. When that fails, those that were initialised are finalised again, and
    /// the library counts as loaded all the same: it is not tried again.
    ///
    /// In the mode `InInitMgr::Recursive` the post-initialise hooks are called later, with those of the start-up that is
    /// going on. A failure of one is reported as `PimUtils` does, and the start-up goes on without the plug-in.
    /// @param mode `InInitMgr::Recursive` from within a start-up, `InInitMgr::Reinitialization` after it.
    /// @throws PimEx::ExLibMultipleLoad when a library of that file name was loaded before, OsSharedLibEx when it cannot be
    ///   opened, exceptions of its packages' hooks as `InInitMgr::initialize`, and ExProgramAborted for any other mode.
    virtual void loadPlugIn(OsFilePath const& path, InInitMgr::InitType mode) = 0;
    /// Whether a library of that file name was loaded, or an attempt was made.
    [[nodiscard]] virtual bool isLoaded(OsFilePath const& path) = 0;

protected:
    PimPlugInMgr();
};

} // namespace Ko
