#pragma once

#include "resmgt/liString.h"

#include <cstddef>
#include <functional>
#include <memory>

namespace Ko {

/// A thread of the operating system. The destructor waits until the thread has ended.
class MtThread {
public:
    struct Settings {
        LiString name;
        bool yieldsToOthers = false;
        std::size_t stackSize = 0;
    };

    /// Starts the thread. @param body must not throw. @throws ExInternalError if the system cannot start it.
    MtThread(Settings settings, std::function<void()> body);
    ~MtThread();
    MtThread(MtThread const&) = delete;
    MtThread& operator=(MtThread const&) = delete;

private:
    struct Native;
    std::unique_ptr<Native> _native;
};

} // namespace Ko
