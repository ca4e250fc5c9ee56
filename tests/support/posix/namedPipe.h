#pragma once

#include "tests/support/temporaryFolder.h"

#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace KoTest {

/// A named pipe with which a test and a child wait for each other.
class NamedPipe {
public:
    NamedPipe() { ::mkfifo(path().c_str(), 0600); }

    std::string path() const { return _folder / "pipe"; }
    /// The step with which a child sends its process number to `hear()`.
    std::string tell() const { return " tell " + path() + " "; }
    /// The step with which a child waits for `release()`.
    std::string await() const { return " await " + path() + " "; }
    /// Waits for the step `tell()`. @returns the child's process number.
    pid_t hear() const {
        std::ifstream pipe(path());
        pid_t number = 0;
        pipe >> number;
        return number;
    }
    /// Waits for the step `await()`, and lets the child continue.
    void release() const { ::close(::open(path().c_str(), O_WRONLY)); }

private:
    TemporaryFolder _folder;
};

} // namespace KoTest
