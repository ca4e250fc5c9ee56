#pragma once

#include "resmgt/liString.h"

#include <cstddef>
#include <functional>
#include <memory>

namespace Ko {

/// A thread of the system. Its destructor waits for its end.
class MtThread {
public:
    struct Settings {
        LiString name;
        bool yieldsToOthers = false;
        std::size_t stackSize = 0;
    };

    /// @param body must not throw. @throws std::system_error
    MtThread(Settings settings, std::function<void()> body);
    ~MtThread();
    MtThread(MtThread const&) = delete;
    MtThread& operator=(MtThread const&) = delete;

private:
    struct Native;
    std::unique_ptr<Native> _native;
};

} // namespace Ko
