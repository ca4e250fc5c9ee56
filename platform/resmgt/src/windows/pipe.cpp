#include "resmgt/src/windows/pipe.h"

#include <array>
#include <atomic>
#include <cwchar>

namespace Ko {

namespace {

constexpr DWORD bufferSize = 64 * 1024;

std::array<wchar_t, 64> nextName() noexcept {
    static std::atomic<unsigned> next{0};
    std::array<wchar_t, 64> name{};
    std::swprintf(name.data(), name.size(), L"\\\\.\\pipe\\ko.%lu.%u", ::GetCurrentProcessId(), next++);
    return name;
}

} // namespace

Pipe Pipe::create(Direction direction) noexcept {
    bool const toChild = direction == Direction::ToChild;
    auto const name = nextName();
    DWORD const access =
        (toChild ? PIPE_ACCESS_OUTBOUND : PIPE_ACCESS_INBOUND) | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE;
    constexpr DWORD mode = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS;
    Pipe pipe;
    pipe.own = Handle(::CreateNamedPipeW(name.data(), access, mode, 1, bufferSize, bufferSize, 0, nullptr));
    if (!pipe.own.isOpen()) return pipe;
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    pipe.ofChild = Handle(::CreateFileW(name.data(), toChild ? GENERIC_READ : GENERIC_WRITE, 0, &inheritable,
        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return pipe;
}

PipeOperation::PipeOperation() noexcept : _event(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

OVERLAPPED& PipeOperation::prepare() noexcept {
    _state = {};
    _state.hEvent = _event.get();
    return _state;
}

bool PipeOperation::note(HANDLE pipe, BOOL isDone) noexcept {
    bool const isTaken = isDone != 0 || ::GetLastError() == ERROR_IO_PENDING;
    _pipe = isTaken ? pipe : nullptr;
    return isTaken;
}

bool PipeOperation::read(HANDLE pipe, void* buffer, DWORD size) noexcept {
    return note(pipe, ::ReadFile(pipe, buffer, size, nullptr, &prepare()));
}

bool PipeOperation::write(HANDLE pipe, void const* bytes, DWORD size) noexcept {
    return note(pipe, ::WriteFile(pipe, bytes, size, nullptr, &prepare()));
}

bool PipeOperation::goesOn(DWORD& count, bool& succeeded) noexcept {
    succeeded = ::GetOverlappedResult(_pipe, &_state, &count, FALSE) != 0;
    if (!succeeded && ::GetLastError() == ERROR_IO_INCOMPLETE) return true;
    _pipe = nullptr;
    return false;
}

void PipeOperation::cancel() noexcept {
    if (!_pipe) return;
    DWORD ignored = 0;
    ::CancelIoEx(_pipe, &_state);
    ::GetOverlappedResult(_pipe, &_state, &ignored, TRUE);
    _pipe = nullptr;
}

} // namespace Ko
