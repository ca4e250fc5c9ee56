#include "base/inVariable.h"
#include "base/inInit.h"
#include "base/inInitMgr.h"
#include "base/inPaths.h"
#include "tests/support/childProcess.h"
#include "tests/support/commandLine.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using KoTest::caught;
using KoTest::CommandLine;
using KoTest::inChildProcess;
using KoTest::TemporaryFolder;

struct Settings {};

class SettingsInit final : public InInit<Settings> {
public:
    SettingsInit() : InInit("settings", packagesOf<>()) {}

    InVariable<char const*> directory{*this, "marlo::test::directory", "A directory."};
    InContextAlias<InInitArg, 1> argument{directory, "dir:"};
    InContextAlias<InInitArg, 1> otherName{directory, "folder:"};
    InContextAlias<InInitEnv, 0> environment{directory, "KO_TEST_DIR"};
    InVariable<char const*> other{*this, "marlo::test::other", "Another one."};
    InContextAlias<InInitArg, 1> otherArgument{other, "other:"};
};

// Starts with the given sources. @returns the value of the variable, "-" where it is not valid, or the reason of the failure.
std::string valueFor(std::vector<std::string> arguments, char const* environment, char const* file) try {
    TemporaryFolder const folder;
    if (environment) ::setenv("KO_TEST_DIR", environment, 1);
    if (file) ::setenv("KO_CONFIG_FILE", folder.write("settings.conf", file).c_str(), 1);
    CommandLine line(std::move(arguments));
    int argc = line.argc();
    SettingsInit package;
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
            Row{{"dir:/1", "other:x", "folder:", "/2"}, nullptr, nullptr, "/2"},
            Row{{}, nullptr, "marlo::test::directory = 1\nmarlo::test::directory = 2", "2"},
            Row{{}, nullptr, "marlo::test::directory = \" a#b \"\"c\"\" \"# here", " a#b \"c\" "},
            Row{{}, nullptr, "marlo::test::directory = a \"b\"\r\n", "a \"b\""},
            Row{{"dir:"}, nullptr, nullptr, "The argument \"dir:\" needs a value after it."},
            Row{{}, nullptr, "\nnonsense\n", "settings.conf:2: expected \"key = value\"."},
            Row{{}, nullptr, "key # = 1", "settings.conf:1: expected \"key = value\"."},
            Row{{}, nullptr, "# = 1\n = 1", "settings.conf:2: the key before \"=\" is empty."},
            Row{{}, nullptr, "a = \"1\"\"", "settings.conf:1: the closing quotation mark is missing."},
            Row{{}, nullptr, "a = \"1\" 2", "settings.conf:1: only a comment may follow the closing quotation mark."},
            Row{{}, nullptr, "\xEF\xBB\xBFmarlo::test::directory = 1",
                "settings.conf:1: the file starts with a byte-order mark; save it as UTF-8 without one."}})
        inChildProcess([&] { EXPECT_EQ(row.expected, valueFor(row.arguments, row.environment, row.file)); });
}

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
            ::setenv(row.variable, row.value.c_str(), 1);
            EXPECT_EQ("The configuration file \"" + row.path + "\" cannot be read: " + row.why + ".",
                caught<InInitEx>([] { InInitMgr::initialize(); }).getReason());
            EXPECT_THROW(static_cast<void>(SettingsInit().directory.get()), InInitEx);
        });
}

TEST(InVariable, OfALibraryThatIsOpenedLaterHasItsValueToo) {
    struct Row {
        std::vector<std::string> arguments;
        char const *environment, *file;
    };
    for (Row const& row : {Row{{"dir:", "/late"}, nullptr, nullptr}, Row{{"dir:/late"}, nullptr, nullptr},
             Row{{}, "/late", nullptr}, Row{{}, nullptr, "marlo::test::directory = /late"}})
        inChildProcess([&] {
            TemporaryFolder const folder;
            if (row.file) ::setenv("KO_CONFIG_FILE", folder.write("settings.conf", row.file).c_str(), 1);
            if (row.environment) ::setenv("KO_TEST_DIR", row.environment, 1);
            CommandLine line(row.arguments);
            int argc = line.argc();
            InInitMgr::initialize(argc, line.argv());
            EXPECT_EQ(1 + row.arguments.size(), static_cast<std::size_t>(argc));
            InReinitGuard guard;
            SettingsInit package;
            guard.initializePackages();
            EXPECT_STREQ("/late", package.directory.get());
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
