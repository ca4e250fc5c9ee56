#include "base/inVariable.h"
#include "base/inInit.h"
#include "base/inInitMgr.h"
#include "base/inPaths.h"
#include "tests/support/childProcess.h"
#include "tests/support/commandLine.h"
#include "tests/support/temporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using KoTest::CommandLine;
using KoTest::inChildProcess;
using KoTest::TemporaryFolder;

struct Settings {};

class SettingsInit final : public InInit<Settings> {
public:
    SettingsInit() : InInit("settings", packagesOf<>()) {}

    InVariable<char const*> directory{*this, "marlo::test::directory", "A directory."};
    InContextAlias<InInitArg, 1> argument{directory, "dir:"};
    InContextAlias<InInitEnv, 0> environment{directory, "KO_TEST_DIR"};
    InVariable<char const*> other{*this, "marlo::test::other", "Another one."};
    InContextAlias<InInitArg, 1> otherArgument{other, "other:"};
};

// Starts with the given sources and tells what the variable became, "-" where it is not valid, or why it did not start.
std::string valueFor(std::vector<std::string> arguments, char const* environment, char const* file) try {
    TemporaryFolder const folder;
    if (environment) ::setenv("KO_TEST_DIR", environment, 1);
    if (file) ::setenv("KO_CONFIG_FILE", folder.write("settings.conf", file).c_str(), 1);
    CommandLine line(std::move(arguments));
    int argc = line.argc();
    SettingsInit const package;
    InInitMgr::initialize(argc, line.argv());
    std::string result = package.directory.isValid() ? package.directory.get() : "-";
    for (int index = 1; index < argc; ++index)
        result += std::string(" ") + line.argv()[static_cast<std::size_t>(index)];
    return result;
} catch (InInitEx const& error) {
    return error.getReason().substr(error.getReason().rfind('/') + 1);
}

TEST(InVariable, TakesTheCommandLineOverTheEnvironmentOverTheFileAndNothingBad) {
    constexpr char const* file = "# where\n\n marlo::test::directory = /file # here\n other = 1\n";
    struct Row {
        std::vector<std::string> arguments;
        char const *environment, *file, *expected;
    };
    for (Row const& row :
        {Row{{}, nullptr, nullptr, "-"}, Row{{}, nullptr, file, "/file"}, Row{{}, "/env", file, "/env"},
            Row{{}, "", file, ""}, Row{{"a", "dir:/arg", "b"}, "/env", file, "/arg a b"},
            Row{{"a", "dir:", "/arg", "b"}, nullptr, nullptr, "/arg a b"},
            Row{{"other:", "dir:x"}, "/env", nullptr, "/env"},
            Row{{"dir:"}, nullptr, nullptr, "The argument \"dir:\" needs a value after it."},
            Row{{}, nullptr, "\nnonsense\n", "settings.conf:2: expected \"key = value\"."}})
        inChildProcess([&] { EXPECT_EQ(row.expected, valueFor(row.arguments, row.environment, row.file)); });
    inChildProcess([] {
        ::setenv("KO_CONFIG_FILE", "/no/such/file", 1);
        EXPECT_THROW(InInitMgr::initialize(), InInitEx);
        EXPECT_THROW(SettingsInit().directory.get(), InInitEx);
    });
}

TEST(InPaths, FindTheFolderThatHoldsTheLibrariesUnlessToldAnother) {
    std::filesystem::path const directory = InPaths::getInstallDir();
    EXPECT_TRUE(std::filesystem::is_directory(directory / "lib")) << directory;
    ::setenv("KO_INSTALL_DIR", "/opt/ko", 1);
    EXPECT_EQ("/opt/ko", InPaths::getInstallDir());
    ::unsetenv("KO_INSTALL_DIR");
}

} // namespace
