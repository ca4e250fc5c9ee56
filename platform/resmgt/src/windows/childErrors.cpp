#include "resmgt/src/windows/childErrors.h"

#include <algorithm>

namespace Ko {

void ChildErrors::open(Handle readEnd) {
    close();
    _pipe = std::move(readEnd);
    _hasWriter = true;
}

void ChildErrors::close() noexcept {
    _operation.cancel();
    _pipe.reset();
    _ready = {};
    _hasWriter = false;
}

// Takes over what the read that went on has brought.
void ChildErrors::update() noexcept {
    DWORD count = 0;
    bool succeeded = false;
    if (!_operation.isStarted() || _operation.goesOn(count, succeeded)) return;
    if (succeeded)
        _ready = {_ahead.data(), count};
    else
        _hasWriter = false;
}

bool ChildErrors::peek(std::size_t& waiting) noexcept {
    update();
    DWORD inPipe = 0;
    // A pipe that has no writer any more, and is empty, is at its end.
    bool const isKnown = ::PeekNamedPipe(_pipe.get(), nullptr, 0, nullptr, &inPipe, nullptr) != 0;
    if (!isKnown && ::GetLastError() != ERROR_BROKEN_PIPE) return false;
    waiting = _ready.size() + inPipe;
    return true;
}

std::string_view ChildErrors::read(std::size_t size) noexcept {
    update();
    if (!_ready.empty()) {
        std::size_t const count = std::min(size, _ready.size());
        std::copy_n(_ready.begin(), count, _given.begin());
        _ready.remove_prefix(count);
        return {_given.data(), count};
    }
    DWORD count = 0;
    bool succeeded = false;
    auto const most = static_cast<DWORD>(std::min(size, _given.size()));
    // While a read for the announcement goes on, the pipe is empty.
    if (_operation.isStarted() || ::PeekNamedPipe(_pipe.get(), nullptr, 0, nullptr, &count, nullptr) == 0 || count == 0)
        return {};
    if (!_operation.read(_pipe.get(), _given.data(), std::min(count, most))) return {};
    if (_operation.goesOn(count, succeeded)) {
        _operation.cancel();
        return {};
    }
    return {_given.data(), succeeded ? count : 0};
}

HANDLE ChildErrors::announce() noexcept {
    update();
    if (!_hasWriter || !_ready.empty()) return nullptr;
    if (!_operation.isStarted() && !_operation.read(_pipe.get(), _ahead.data(), static_cast<DWORD>(_ahead.size()))) {
        _hasWriter = false;
        return nullptr;
    }
    return _operation.event();
}

} // namespace Ko
