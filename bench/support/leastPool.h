#pragma once

#include "bench/support/countdown.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace KoBench {

/// An object for each task, as applications make them.
class LeastTask {
public:
    virtual ~LeastTask() = default;
    virtual void execute() = 0;
};

/// A task that counts down.
class LeastCountingTask final : public LeastTask {
public:
    explicit LeastCountingTask(Countdown& countdown) : _countdown(countdown) {}
    void execute() override { _countdown.done(); }

private:
    Countdown& _countdown;
};

/// Minimal group of workers: a mutex, a condition variable and a deque; wakes one worker at a time.
class LeastPool {
public:
    explicit LeastPool(int workers) {
        for (int worker = 0; worker < workers; ++worker)
            _threads.emplace_back([this] { work(); });
    }
    ~LeastPool() {
        {
            std::lock_guard const guard(_mutex);
            _stopping = true;
        }
        _nonEmpty.notify_all();
    }
    void add(std::unique_ptr<LeastTask> task) {
        bool wakes = false;
        {
            std::lock_guard const guard(_mutex);
            _tasks.push_back(std::move(task));
            wakes = needsWorker();
        }
        if (wakes) _nonEmpty.notify_one();
    }

private:
    bool needsWorker() {
        if (_sleeping == 0 || _waking) return false;
        return _waking = true;
    }
    void work() {
        for (;;) {
            std::unique_lock lock(_mutex);
            while (_tasks.empty() && !_stopping) {
                ++_sleeping;
                _nonEmpty.wait(lock);
                --_sleeping;
                _waking = false;
            }
            if (_stopping) return;
            auto const task = std::move(_tasks.front());
            _tasks.pop_front();
            bool const wakes = !_tasks.empty() && needsWorker();
            lock.unlock();
            if (wakes) _nonEmpty.notify_one();
            task->execute();
        }
    }

    std::mutex _mutex;
    std::condition_variable _nonEmpty;
    std::deque<std::unique_ptr<LeastTask>> _tasks;
    int _sleeping = 0;
    bool _waking = false;
    bool _stopping = false;
    std::vector<std::jthread> _threads;
};

} // namespace KoBench
