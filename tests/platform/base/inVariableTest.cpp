#include "base/inVariable.h"
#include "base/inInit.h"
#include "base/inInitMgr.h"
#include "base/inPaths.h"
#include "tests/support/childProcess.h"
#include "tests/support/commandLine.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"
#include "variables.h"

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
    if (environment) KoTest::setVariable("KO_TEST_DIR", environment);
    if (file) KoTest::setVariable("KO_CONFIG_FILE", folder.write("settings.conf", file).string());
    CommandLine line(std::move(arguments));
    int argc = line.argc();
    SettingsInit package;
    InInitMgr::initialize(argc, line.argv());
    std::string result = package.directory.isValid() ? package.directory.get() : "-";
    for (int index = 1; index < argc; ++index)
        result += std::string(" ") + line.argv()[static_cast<std::size_t>(index)];
    return result;
} catch (InInitEx const& error) {
    return error.getReason().substr(error.getReason().find_last_of("/\\") + 1);
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

TEST(InVariable, OfALibraryThatIsOpenedLaterHasItsValueToo) {
    struct Row {
        std::vector<std::string> arguments;
        char const *environment, *file;
    };
    for (Row const& row : {Row{{"dir:", "/late"}, nullptr, nullptr}, Row{{"dir:/late"}, nullptr, nullptr},
             Row{{}, "/late", nullptr}, Row{{}, nullptr, "marlo::test::directory = /late"}})
        inChildProcess([&] {
            TemporaryFolder const folder;
            if (row.file) KoTest::setVariable("KO_CONFIG_FILE", folder.write("settings.conf", row.file).string());
            if (row.environment) KoTest::setVariable("KO_TEST_DIR", row.environment);
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
    EXPECT_TRUE(std::filesystem::is_directory(directory / "bin")) << directory;
    KoTest::setVariable("KO_INSTALL_DIR", "/opt/ko");
    EXPECT_EQ("/opt/ko", InPaths::getInstallDir());
    KoTest::unsetVariable("KO_INSTALL_DIR");
}

} // namespace
