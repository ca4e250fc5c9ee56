#pragma once

#include "resmgt/liString.h"
#include "resmgt/mtTask.h"
#include "resmgt/resmgtApi.h"

#include <cstddef>
#include <memory>

namespace Ko {

class MtThread;

/// Threads that execute the tasks that a derived class hands to them. They live from `start()` to `stop()`, and sleep
/// where the derived class waits.
class KO_RESMGT_API MtThreadPool {
public:
    MtThreadPool(MtThreadPool const&) = delete;
    MtThreadPool& operator=(MtThreadPool const&) = delete;

    /// As they were given:
    LiString const& getName() const noexcept { return _name; }
    int getNumThreads() const noexcept { return _numThreads; }

protected:
    /// @param name also that of the threads, as far as the system has room for it.
    /// @param yieldsToOthers whether the threads only get the processor time that nothing else in the system wants.
    /// @param stackSize in bytes; 0 for the system's own choice.
    /// @throws ExAssertionFailed unless there is at least one thread.
    MtThreadPool(LiString name, int numThreads, bool yieldsToOthers, std::size_t stackSize);
    virtual ~MtThreadPool();

    /// Called by the constructor of the derived class, whose `obtainTask()` is used from now on.
    /// @throws std::system_error when the system has no more threads; none is left running then.
    void start();
    /// Called by the destructor of the derived class, after it has made `obtainTask()` return false. Returns when all
    /// threads have ended. May be called again.
    void stop() noexcept;

    /// Called by each thread when it has time, until the result is false: waits for a task and puts it into `task`, which
    /// holds the one that the thread has executed before, if any. Must not throw.
    virtual bool obtainTask(MtTask& task) = 0;

private:
    void work();

    LiString _name;
    int _numThreads;
    bool _yieldsToOthers;
    std::size_t _stackSize;
    Vector<std::unique_ptr<MtThread>> _threads;
};

} // namespace Ko
