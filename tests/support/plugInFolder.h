#pragma once

#include "resmgt/osFilePath.h"
#include "tests/support/temporaryFolder.h"

namespace KoTest {

/// A temporary folder for copies of the plug-ins that are built for tests.
class PlugInFolder : public TemporaryFolder {
public:
    /// Copies a plug-in into the folder.
    /// @param name may begin with folders.
    /// @param fixture the name of the plug-in to copy, if it differs.
    Ko::OsFilePath add(std::string const& name, std::string const& fixture = {}) const {
        std::filesystem::path const original =
            std::filesystem::path(KO_TEST_PLUG_INS) / (fixture.empty() ? name : fixture);
        std::filesystem::create_directories((*this / name).parent_path());
        std::filesystem::copy_file(original, *this / name);
        return path(name);
    }
    Ko::OsFilePath path(std::string const& name = {}) const { return (*this / name).string(); }
};

} // namespace KoTest
