#include "resmgt/src/windows/childInput.h"

#include <algorithm>

namespace Ko {

namespace {

constexpr std::size_t mostAtOnce = std::size_t{64} * 1024;

} // namespace

void ChildInput::open(Handle writeEnd) {
    drop();
    _kept = std::make_unique_for_overwrite<char[]>(mostAtOnce);
    _pipe = std::move(writeEnd);
    _isToClose = false;
}

std::optional<std::size_t> ChildInput::write(std::string_view bytes) {
    update();
    if (!_pipe.isOpen() || _isToClose) return {};
    if (_operation.isStarted() || bytes.empty()) return 0;
    std::size_t const count = std::min(bytes.size(), mostAtOnce);
    std::copy_n(bytes.begin(), count, _kept.get());
    if (!_operation.write(_pipe.get(), _kept.get(), static_cast<DWORD>(count))) {
        drop();
        return {};
    }
    update();
    if (!_pipe.isOpen()) return {};
    return count;
}

void ChildInput::close() noexcept {
    _isToClose = true;
    update();
}

void ChildInput::drop() noexcept {
    _operation.cancel();
    _pipe.reset();
}

void ChildInput::update() noexcept {
    DWORD count = 0;
    bool succeeded = true;
    if (_operation.isStarted() && _operation.goesOn(count, succeeded)) return;
    if (!succeeded || _isToClose) drop();
}

} // namespace Ko
