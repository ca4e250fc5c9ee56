#pragma once

#include <sys/types.h>
#include <windows.h>

namespace KoTest {

/// Another process, safe against reuse of its number.
class Process {
public:
    explicit Process(pid_t number)
        : _handle(::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(number))) {}
    ~Process() { ::CloseHandle(_handle); }
    Process(Process const&) = delete;
    Process& operator=(Process const&) = delete;

    bool exists() const { return ::WaitForSingleObject(_handle, 0) == WAIT_TIMEOUT; }
    void awaitEnd() const { ::WaitForSingleObject(_handle, INFINITE); }

private:
    HANDLE _handle;
};

} // namespace KoTest
