#pragma once

#include <atomic>
#include <cstdlib>
#include <string>
#include <sys/types.h>
#include <windows.h>

namespace KoTest {

/// A named pipe with which a test and a child wait for each other.
class NamedPipe {
public:
    NamedPipe() : _path(nextPath()), _end(createEnd(_path)) {}
    ~NamedPipe() { ::CloseHandle(_end); }
    NamedPipe(NamedPipe const&) = delete;
    NamedPipe& operator=(NamedPipe const&) = delete;

    std::string const& path() const { return _path; }
    /// The step with which a child sends its process number to `hear()`.
    std::string tell() const { return " tell " + path() + " "; }
    /// The step with which a child waits for `release()`.
    std::string await() const { return " await " + path() + " "; }
    /// Waits for the step `tell()`. @returns the child's process number.
    pid_t hear() const {
        connect();
        std::string text(32, '\0');
        DWORD length = 0;
        ::ReadFile(_end, text.data(), static_cast<DWORD>(text.size()), &length, nullptr);
        ::DisconnectNamedPipe(_end);
        return std::atol(text.substr(0, length).c_str());
    }
    /// Waits for the step `await()`, and lets the child continue.
    void release() const {
        connect();
        ::DisconnectNamedPipe(_end);
    }

private:
    static std::string nextPath() {
        static std::atomic<int> number{0};
        return "//./pipe/koTest." + std::to_string(::GetCurrentProcessId()) + "." + std::to_string(number++);
    }
    static HANDLE createEnd(std::string const& path) {
        return ::CreateNamedPipeA(
            path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_WAIT, 1, 512, 512, 0, nullptr);
    }
    // The child may have opened its end already.
    void connect() const { ::ConnectNamedPipe(_end, nullptr); }

    std::string const _path;
    HANDLE const _end;
};

} // namespace KoTest
