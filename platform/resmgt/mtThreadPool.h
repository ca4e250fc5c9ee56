#pragma once

#include "resmgt/liString.h"
#include "resmgt/mtTask.h"
#include "resmgt/resmgtApi.h"

#include <cstddef>
#include <memory>

namespace Ko {

class MtThread;

/// Threads that execute the tasks of a derived class. They run from `start()` to `stop()`, and sleep while the derived class
/// waits for a task.
class KO_RESMGT_API MtThreadPool {
public:
    MtThreadPool(MtThreadPool const&) = delete;
    MtThreadPool& operator=(MtThreadPool const&) = delete;

    /// The name of the pool.
    [[nodiscard]] LiString const& getName() const noexcept { return _name; }
    /// The number of threads.
    [[nodiscard]] int getNumThreads() const noexcept { return _numThreads; }

protected:
    /// @param name of the pool and of its threads; the system may shorten the latter.
    /// @param yieldsToOthers whether the threads only get processor time that no other thread of the system needs.
    /// @param stackSize in bytes; 0 for the default of the system.
    /// @throws ExAssertionFailed unless there is at least one thread.
    MtThreadPool(LiString name, int numThreads, bool yieldsToOthers, std::size_t stackSize);
    virtual ~MtThreadPool();

    /// Starts the threads, which call `obtainTask()` from now on. Called by the constructor of the derived class.
    /// @throws ExInternalError if the system cannot start a thread. The threads that were started run until `stop()` then.
    void start();
    /// Waits until all threads have ended. Called by the destructor of the derived class, after it has made `obtainTask()`
    /// return false. May be called again.
    void stop() noexcept;

    /// Waits for a task. Called by each idle thread until the result is false. Must not throw.
    /// @param task receives the task; on entry it holds the one that the thread executed before, if any.
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
