#include "resmgt/src/threads/mtThread.h"

#include "base/exBase.h"
#include "resmgt/src/windows/handle.h"
#include "resmgt/src/windows/utf16.h"

#include <cerrno>
#include <process.h>
#include <system_error>

namespace Ko {

namespace {

// The function came with an update of Windows 10, after its headers.
void setName(LiString const& name) {
    using Function = HRESULT(WINAPI*)(HANDLE, wchar_t const*);
    auto const function =
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32"), "SetThreadDescription"));
    if (function) reinterpret_cast<Function>(function)(::GetCurrentThread(), toUtf16(name).c_str());
}

} // namespace

struct MtThread::Native {
    static unsigned __stdcall run(void* argument);

    Settings settings;
    std::function<void()> body;
    Handle thread;
};

unsigned __stdcall MtThread::Native::run(void* argument) {
    auto const& native = *static_cast<Native const*>(argument);
    setName(native.settings.name);
    if (native.settings.yieldsToOthers) ::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_IDLE);
    native.body();
    return 0;
}

MtThread::MtThread(Settings settings, std::function<void()> body)
    : _native(std::make_unique<Native>(Native{std::move(settings), std::move(body), {}})) {
    // The size is that of the reserved addresses, as on other systems; the system commits pages as they are used.
    unsigned const reserves = _native->settings.stackSize > 0 ? STACK_SIZE_PARAM_IS_A_RESERVATION : 0;
    auto const stackSize = static_cast<unsigned>(_native->settings.stackSize);
    // By the C library, which has data of its own for each thread.
    auto const thread = ::_beginthreadex(nullptr, stackSize, &Native::run, _native.get(), reserves, nullptr);
    if (thread == 0)
        throw ExInternalError("resmgt\\src\\mtThread", __LINE__,
            "A thread cannot be started: " + std::generic_category().message(errno) + ".");
    _native->thread = Handle(reinterpret_cast<HANDLE>(thread));
}

MtThread::~MtThread() {
    ::WaitForSingleObject(_native->thread.get(), INFINITE);
}

} // namespace Ko
