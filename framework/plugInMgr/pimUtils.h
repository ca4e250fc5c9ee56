#pragma once

#include "base/inInitMgr.h"
#include "framework/frameworkApi.h"
#include "framework/plugInMgr/pimReport.h"

namespace Ko {

/// Finds plug-ins and loads them.
///
/// A plug-in's file is named `<name>.<type>.so` (`.dll` on Windows): "blur.op.so" is one of the type "op". It is searched for
/// in the plug-in directories, in their order: those that the setting "marlo::deployment::pluginsDir" lists, else
/// `plugins/` in the installation directory. Relative directories of the setting start at the current directory of the
/// start-up. Two more settings choose among the files that are found:
///
///     marlo::plugins::include = op=blur,op=grade   # of the type "op", only those whose names contain one of these
///     marlo::plugins::exclude = gen=all            # none of the type "gen"
///
/// A type that the inclusions do not name is not limited by them; a plug-in that they admit may still be excluded. No blanks
/// stand around the commas and equality signs.
///
/// A plug-in with a `PimDeclaration` is refused before its library is opened where it was built against an interface that
/// does not fit (the framework's, or one of `setInterface`), or where a plug-in that it requires is missing, filtered out,
/// refused or failed, or requires it in turn. Required plug-ins are loaded before it, whatever their types: from its own
/// directory, or else from the first plug-in directory that has them. A library without a declaration is opened as it is.
///
/// A plug-in that is refused or fails is reported, as a warning for the user and in the log group "Framework.PlugInMgr", and
/// the others are loaded. `PimPlugInMgr` opens each plug-in once; its rules about modes hold here too. A refused one may be
/// loaded later.
///
///     PimUtils::loadType("op", InInitMgr::Reinitialization, PimUtils::getNullCb());
///     for (PimFinding const& plugIn : PimUtils::getReport().plugIns) show(plugIn.path, plugIn.stage, plugIn.reason);
///
/// Any thread, unless another one changes the directories or the offered interfaces. A plug-in is initialised on the thread
/// that loads it: what its hooks call must be allowed there. The registry of actions and other objects of the application
/// thread are not allowed on a worker, so a plug-in that registers with them has to be loaded on the application thread.
class KO_FRAMEWORK_API PimUtils {
public:
    /// Observes the progress of loading.
    class KO_FRAMEWORK_API Callback {
    public:
        virtual ~Callback();
        /// Called right before a library is opened, on the thread that loads.
        virtual void notifyLoading(OsFilePath const& path) = 0;
        /// Called for each file that is not loaded, also as one that another plug-in requires; by default does nothing. On
        /// the thread that loads, after the file was reported. Not called for files that were loaded or failed in an earlier
        /// load, nor for a post-initialise hook that fails later, with those of a start-up: such failures stand in
        /// `getReport()`.
        /// @param stage any but `Loaded`.
        /// @param error the reason; OsSharedLibEx with `Failed` for a library that could not be opened.
        virtual void notifyRefused(OsFilePath const& path, PimStage stage, ExBase const& error);
    };

    PimUtils() = delete;

    /// Subscribes the messages and reads the settings; called once, by the package.
    static void initialize();

    /// Appends a directory to the plug-in directories.
    static void addPiDirectoryPath(OsFilePath const& directory);
    /// Replaces the plug-in directories.
    static void setFilePaths(Vector<OsFilePath> const& directories);
    /// The plug-in directories, in the order in which they are searched.
    [[nodiscard]] static Vector<OsFilePath> const& getFilePaths();
    /// Offers an interface of the host to plug-ins, or replaces the offered one of that name. Before plug-ins are loaded.
    /// @param interface "name major.minor", as the property KO_PLUGIN_INTERFACE of the library that plug-ins are linked with.
    /// @throws ExAssertionFailed when it is not of this form.
    static void setInterface(std::string_view interface);
    /// The directories that were searched until now, and the state of each file. Any thread.
    [[nodiscard]] static PimReport getReport();
    /// A callback that does nothing.
    [[nodiscard]] static Callback& getNullCb();

    /// Loads the plug-ins of a type that lie in a directory.
    /// @returns how many of them are present now; those that were loaded or attempted before count too.
    /// @throws OsFileEx::ExInvalidPath when there is no such directory.
    static int loadType(
        OsFilePath const& directory, std::string const& type, InInitMgr::InitType mode, Callback& callback);
    /// Loads the plug-ins of a type from all plug-in directories.
    /// @returns the sum of the other `loadType`.
    /// @throws OsFileEx::ExInvalidPath at the first directory that does not exist.
    static int loadType(std::string const& type, InInitMgr::InitType mode, Callback& callback);
    /// Loads the plug-ins in a directory whose file names match a pattern of `OsWildcardFilter`, in the order of their names.
    /// @returns how many of them are present now; those that were loaded or attempted before count too.
    /// @throws OsFileEx::ExInvalidPath when there is no such directory.
    static int loadWildcard(
        OsFilePath const& directory, std::string const& pattern, InInitMgr::InitType mode, Callback& callback);
    /// Loads the plug-ins whose file names match a pattern from all plug-in directories.
    /// @returns the sum of the other `loadWildcard`.
    /// @throws OsFileEx::ExInvalidPath at the first directory that does not exist.
    static int loadWildcard(std::string const& pattern, InInitMgr::InitType mode, Callback& callback);
    /// Loads one plug-in.
    /// @param path is searched for in the plug-in directories if it has no directory of its own. The suffix of libraries may
    ///   be left out: "blur.op".
    /// @returns whether the plug-in is present now, or was attempted before.
    static bool load(OsFilePath const& path, InInitMgr::InitType mode);
    /// As above, with a callback.
    static bool load(OsFilePath const& path, InInitMgr::InitType mode, Callback& callback);
};

} // namespace Ko
