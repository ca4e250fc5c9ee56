#pragma once

#include "base/inInitMgr.h"
#include "framework/frameworkApi.h"
#include "resmgt/osFilePath.h"

namespace Ko {

/// Finds plug-ins and loads them.
///
/// A plug-in's file is named `<name>.<type>.so` (`.dll` on Windows): "blur.op.so" is one of the type "op". It is looked for
/// in the plug-in directories, in their order: those that the setting "marlo::deployment::pluginsDir" lists, else
/// `plugins/` in the installation directory. Two more settings choose among the files that are found:
///
///     marlo::plugins::include = op=blur,op=grade   # of the type "op", only those whose names contain one of these
///     marlo::plugins::exclude = gen=all            # none of the type "gen"
///
/// A type that the inclusions do not name is not limited by them; what they let pass may still be excluded. No blanks stand
/// around the commas and equality signs.
///
/// A plug-in that fails is reported, as a warning for the user and in the log group "Framework.PlugInMgr", and the others
/// are loaded. All plug-ins go to `PimPlugInMgr`, which opens each once; its rules about modes hold here too.
///
///     PimUtils::loadType("op", InInitMgr::Reinitialization, PimUtils::getNullCb());
///
/// Any thread, as long as no other changes the directories.
class KO_FRAMEWORK_API PimUtils {
public:
    /// Is told how loading gets on.
    class KO_FRAMEWORK_API Callback {
    public:
        virtual ~Callback();
        /// Called right before a library is opened.
        virtual void notifyLoading(OsFilePath const& path) = 0;
    };

    PimUtils() = delete;

    /// Takes over the messages and settings; called once, by the package.
    static void initialize();

    /// Puts a directory behind the plug-in directories, or others in place of all:
    static void addPiDirectoryPath(OsFilePath const& directory);
    static void setFilePaths(Vector<OsFilePath> const& directories);
    /// The plug-in directories.
    static Vector<OsFilePath> const& getFilePaths();
    /// A callback that does nothing.
    static Callback& getNullCb();

    /// Loads all plug-ins of a type that lie in a directory.
    /// @returns how many of them are present now; those that were loaded before, or tried to, count too.
    /// @throws OsFileEx::ExInvalidPath when there is no such directory.
    static int loadType(
        OsFilePath const& directory, std::string const& type, InInitMgr::InitType mode, Callback& callback);
    /// The same for all plug-in directories.
    static int loadType(std::string const& type, InInitMgr::InitType mode, Callback& callback);
    /// Loads all plug-ins in a directory whose file names match a pattern of `OsWildcardFilter`, in the order of their names.
    /// @returns how many of them are present now; those that were loaded before, or tried to, count too.
    /// @throws OsFileEx::ExInvalidPath when there is no such directory.
    static int loadWildcard(
        OsFilePath const& directory, std::string const& pattern, InInitMgr::InitType mode, Callback& callback);
    /// The same for all plug-in directories.
    static int loadWildcard(std::string const& pattern, InInitMgr::InitType mode, Callback& callback);
    /// Loads one plug-in.
    /// @param path is looked for in the plug-in directories if it has no directory of its own. The suffix of libraries may
    ///   be left out: "blur.op".
    /// @returns whether it is present now, or was tried before.
    static bool load(OsFilePath const& path, InInitMgr::InitType mode);
};

} // namespace Ko
