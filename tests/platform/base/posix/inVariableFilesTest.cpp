#include "base/inInit.h"
#include "base/inInitMgr.h"
#include "base/inVariable.h"
#include "tests/support/childProcess.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"
#include "variables.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using KoTest::caught;
using KoTest::inChildProcess;
using KoTest::TemporaryFolder;

struct Settings {};

class SettingsInit final : public InInit<Settings> {
public:
    SettingsInit() : InInit("settings", packagesOf<>()) {}

    InVariable<char const*> directory{*this, "marlo::test::directory", "A directory."};
};

TEST(InVariable, NamesAConfigurationFileThatCannotBeRead) {
    TemporaryFolder const folder;
    folder.write("folder/koframework.conf/file", "");
    std::filesystem::create_directory(folder / "link");
    std::filesystem::create_symlink("koframework.conf", folder / "link/koframework.conf");
    std::string const inFolder = folder / "folder", inLink = folder / "link";
    struct Row {
        char const* variable;
        std::string value, path, why;
    };
    for (Row const& row : {Row{"KO_CONFIG_FILE", "/no/such/file", "/no/such/file", "No such file or directory"},
             Row{"KO_CONFIG_FILE", inFolder, inFolder, "Is a directory"},
             Row{"KO_CONFIG_FILE", "/proc/self/mem", "/proc/self/mem", "Input/output error"},
             Row{"KO_INSTALL_DIR", inFolder, inFolder + "/koframework.conf", "Is a directory"},
             Row{"KO_INSTALL_DIR", inLink, inLink + "/koframework.conf", "Too many levels of symbolic links"}})
        inChildProcess([&] {
            KoTest::setVariable(row.variable, row.value);
            EXPECT_EQ("The configuration file \"" + row.path + "\" cannot be read: " + row.why + ".",
                caught<InInitEx>([] { InInitMgr::initialize(); }).getReason());
            EXPECT_THROW(static_cast<void>(SettingsInit().directory.get()), InInitEx);
        });
}

} // namespace
