#pragma once

#include "otherProcess.h"
#include "resmgt/osChildProcess.h"
#include "resmgt/osEnv.h"
#include "tests/support/childCommand.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <string_view>

namespace KoTest {

inline constexpr double forever = 1e6;

/// A launched child with all output that was read.
class Child : public Ko::OsChildProcess {
public:
    Child(std::string const& commandLine, Ko::Vector<Ko::LiString> const& environment = Ko::OsEnv::getEntries(),
        std::string const& folder = "") {
        setWorkingFolder(folder);
        EXPECT_EQ(Launch::Started, launch(commandLine, environment)) << getLaunchError();
    }

    void readAll() {
        for (auto piece = readOutput(1000); !piece.empty(); piece = readOutput(1000))
            output += piece;
        for (std::size_t waiting = 0; peekError(waiting) && waiting > 0;)
            error += readError(waiting);
    }
    int readToEnd() {
        int exitCode = stillActive;
        for (; exitCode == stillActive; nap(forever)) {
            readAll();
            EXPECT_TRUE(getExitCode(exitCode));
        }
        readAll();
        return exitCode;
    }

    // Writes up to the end, or until the child refuses it. Returns how many bytes were written.
    std::size_t feed(std::string_view bytes) {
        std::size_t written = 0;
        for (auto count = writeInput(bytes); count && written < bytes.size();
             count = writeInput(bytes.substr(written))) {
            written += *count;
            if (*count == 0) nap(forever);
        }
        return written;
    }

    std::string output;
    std::string error;
};

inline std::string outputOf(std::string const& steps) {
    Child child(childCommand(steps));
    EXPECT_EQ(0, child.readToEnd());
    EXPECT_TRUE(child.forget());
    return child.output;
}

/// How many entries a folder has.
inline std::ptrdiff_t countEntries(char const* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

} // namespace KoTest
