#pragma once

#include "tests/support/thrown.h"

#include <exception>
#include <gtest/gtest.h>
#include <new>

namespace KoTest {

/// Makes allocations fail, in programs that link the operator new of allocationFaults.cpp.
class AllocationFaults {
public:
    enum class Kind {
        None,
        /// One allocation fails.
        Single,
        /// Memory has run out: one fails, and all after it.
        Lasting
    };

    /// Makes the allocation with this number fail, of this thread or of any; 1 is the next one.
    static void arm(Kind kind, long number, bool everyThread) noexcept;
    /// Ends that. @returns whether an allocation has failed.
    static bool disarm() noexcept;
    /// The number of allocated blocks.
    static long liveBlocks() noexcept;
    /// Their total size.
    static long liveBytes() noexcept;

    /// Keeps the allocations of this thread from failing during its lifetime.
    class Pause {
    public:
        Pause() noexcept;
        ~Pause();
        Pause(Pause const&) = delete;
        Pause& operator=(Pause const&) = delete;
    };
};

/// One attempt at an operation, with or without a fault.
class FaultyAttempt {
public:
    /// For `tryAllFaults`.
    FaultyAttempt(AllocationFaults::Kind kind, long number, bool everyThread)
        : _kind(kind), _number(number), _everyThread(everyThread) {}

    /// Performs the tested operation; once in an attempt. @returns whether it succeeded.
    template <class Operation>
    bool operator()(Operation operation) {
        std::exception_ptr error;
        AllocationFaults::arm(_kind, _number, _everyThread);
        try {
            operation();
        } catch (...) {
            error = std::current_exception();
        }
        if (!_everyThread) end();
        if (!error) return true;
        reason = messageOf([&] { std::rethrow_exception(error); });
        EXPECT_TRUE(_everyThread || hadFault) << "failed without a fault: " << reason;
        return false;
    }
    /// The same for an operation that must not fail.
    template <class Operation>
    void withoutFail(Operation operation) {
        EXPECT_TRUE((*this)(operation)) << reason;
    }
    /// Where the allocations of all threads fail: to be called after the operation's work on other threads.
    void end() noexcept { hadFault = AllocationFaults::disarm(); }

    bool hadFault = false;
    std::string reason;

private:
    AllocationFaults::Kind _kind;
    long _number;
    bool _everyThread;
};

/// Calls `run(kind, number)` with the first, second, third ... allocation failing, until it returns that none has failed:
/// first with a single fault each time, then with all further allocations failing.
template <class Run>
void forEachFault(std::string const& name, Run run) {
    using Kind = AllocationFaults::Kind;
    for (Kind const kind : {Kind::Single, Kind::Lasting})
        for (long number = 1;; ++number) {
            SCOPED_TRACE(name + (kind == Kind::Single ? ", fault " : ", no memory from ") + std::to_string(number));
            bool const hadFault = run(kind, number);
            if (testing::Test::HasFailure()) return; // the text of a failure allocates memory
            if (!hadFault) break;
        }
}

/// Attempts an operation with each of its allocations failing. `attempt` prepares the operation, performs it through its
/// argument, and checks the state afterwards, for success and failure. It must free everything that it allocates.
template <class Attempt>
void tryAllFaults(std::string const& name, Attempt attempt, bool everyThread = false) {
    using Kind = AllocationFaults::Kind;
    auto const run = [&](Kind kind, long number) {
        long const before = AllocationFaults::liveBlocks();
        bool hadFault = false;
        {
            FaultyAttempt faulty(kind, number, everyThread);
            attempt(faulty);
            hadFault = faulty.hadFault;
        }
        if (kind != Kind::None && !testing::Test::HasFailure()) {
            EXPECT_EQ(before, AllocationFaults::liveBlocks()) << "something is left";
        }
        return hadFault;
    };
    for (int round = 0; round < 2; ++round)
        run(Kind::None, 0); // creates the objects that a process creates once
    forEachFault(name, run);
}

} // namespace KoTest
