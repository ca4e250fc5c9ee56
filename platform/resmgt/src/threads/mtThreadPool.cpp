#include "resmgt/mtThreadPool.h"

#include "base/assertions.h"
#include "resmgt/lgFirstError.h"
#include "resmgt/src/threads/mtThread.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\mtThreadPool"};

} // namespace

MtThreadPool::MtThreadPool(LiString name, int numThreads, bool yieldsToOthers, std::size_t stackSize)
    : _name(std::move(name)), _numThreads(numThreads), _yieldsToOthers(yieldsToOthers), _stackSize(stackSize) {
    source.require(numThreads > 0, "numThreads > 0");
}

MtThreadPool::~MtThreadPool() = default;

void MtThreadPool::start() {
    _threads.reserve(static_cast<std::size_t>(_numThreads));
    while (_threads.size() < static_cast<std::size_t>(_numThreads))
        _threads.push_back(
            std::make_unique<MtThread>(MtThread::Settings{_name, _yieldsToOthers, _stackSize}, [this] { work(); }));
}

void MtThreadPool::stop() noexcept {
    _threads.clear();
}

void MtThreadPool::work() {
    for (MtTask task; obtainTask(task);) {
        LgFirstError error("A task");
        error.capture([&task] { task.execute(); });
        error.log();
    }
}

} // namespace Ko
