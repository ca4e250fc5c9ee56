#pragma once

#include <utility>
#include <windows.h>

namespace Ko {

/// Owns a handle of the system. Started programs inherit it only where it was made inheritable.
class Handle {
public:
    Handle() noexcept = default;
    /// @param handle null or INVALID_HANDLE_VALUE for none: the system's functions use both.
    explicit Handle(HANDLE handle) noexcept : _handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(Handle&& other) noexcept : _handle(std::exchange(other._handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        reset(std::exchange(other._handle, nullptr));
        return *this;
    }
    ~Handle() { reset(); }

    bool isOpen() const noexcept { return _handle != nullptr; }
    HANDLE get() const noexcept { return _handle; }
    void reset(HANDLE handle = nullptr) noexcept {
        if (_handle) ::CloseHandle(_handle);
        _handle = handle;
    }

private:
    HANDLE _handle = nullptr;
};

} // namespace Ko
