#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace KoTest {

/// Another process, safe against reuse of its number.
class Process {
public:
    explicit Process(pid_t number) : _descriptor(static_cast<int>(syscall(SYS_pidfd_open, number, 0))) {}
    ~Process() { ::close(_descriptor); }
    Process(Process const&) = delete;
    Process& operator=(Process const&) = delete;

    bool exists() const { return syscall(SYS_pidfd_send_signal, _descriptor, 0, nullptr, 0) == 0; }
    void awaitEnd() const {
        pollfd process{_descriptor, POLLIN, 0};
        EXPECT_EQ(1, ::poll(&process, 1, -1));
    }

private:
    int _descriptor;
};

} // namespace KoTest
