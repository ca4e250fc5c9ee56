#pragma once

#include "tests/support/thrown.h"

#include <exception>
#include <gtest/gtest.h>
#include <new>

namespace KoTest {

/// Lets allocations fail: the program that links allocationFaults.cpp has an operator new that asks here.
class AllocationFaults {
public:
    enum class Kind {
        None,
        /// One allocation fails.
        Single,
        /// Memory has run out: one fails, and all after it.
        Lasting
    };

    /// From now on the number-th allocation (1 is the next) of this thread or of any fails.
    static void arm(Kind kind, long number, bool everyThread) noexcept;
    /// @returns whether an allocation has failed.
    static bool disarm() noexcept;
    /// How many blocks are allocated now.
    static long liveBlocks() noexcept;
    /// How large these are together.
    static long liveBytes() noexcept;

    /// While it exists, no allocation of this thread fails.
    class Pause {
    public:
        Pause() noexcept;
        ~Pause();
        Pause(Pause const&) = delete;
        Pause& operator=(Pause const&) = delete;
    };

    /// For the summary of all that the program tried.
    static void count(long faults) noexcept;
};

/// One attempt at an operation, with or without a fault.
class FaultyAttempt {
public:
    /// For `tryAllFaults`.
    FaultyAttempt(AllocationFaults::Kind kind, long number, bool everyThread)
        : _kind(kind), _number(number), _everyThread(everyThread) {}

    /// Performs the operation that is tested, once in an attempt. @returns whether it was done.
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
        if (!_everyThread) {
            EXPECT_TRUE(hadFault) << "failed without a fault: " << reason;
        }
        return false;
    }
    /// The same for one that must not fail.
    template <class Operation>
    void withoutFail(Operation operation) {
        EXPECT_TRUE((*this)(operation)) << reason;
    }
    /// Where every thread's allocations fail: to be called when the operation's work on other threads is done.
    void end() noexcept { hadFault = AllocationFaults::disarm(); }

    bool hadFault = false;
    std::string reason;

private:
    AllocationFaults::Kind _kind;
    long _number;
    bool _everyThread;
};

/// Calls `run(kind, number)` for the first, second, third ... allocation that is to fail, until it tells that none did: with
/// a single fault each time, then with no memory after it.
template <class Run>
void forEachFault(std::string const& name, Run run) {
    using Kind = AllocationFaults::Kind;
    long faults = 0;
    for (Kind const kind : {Kind::Single, Kind::Lasting})
        for (long number = 1;; ++number, ++faults) {
            SCOPED_TRACE(name + (kind == Kind::Single ? ", fault " : ", no memory from ") + std::to_string(number));
            bool const hadFault = run(kind, number);
            if (testing::Test::HasFailure()) return; // whose words take memory
            if (!hadFault) break;
        }
    AllocationFaults::count(faults);
}

/// Attempts an operation with each of its allocations failing. `attempt` prepares all that the operation needs, performs it
/// through its argument, and then expects what has to hold whatever became of it. Nothing that it allocates may be left
/// afterwards.
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
        run(Kind::None, 0); // makes all that is made once in a process
    forEachFault(name, run);
}

} // namespace KoTest
