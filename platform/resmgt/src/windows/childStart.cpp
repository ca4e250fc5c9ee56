#include "resmgt/src/windows/childStart.h"

#include "resmgt/src/windows/utf16.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace Ko {

namespace {

/// What a new process gets beside its command line.
class Attributes {
public:
    explicit Attributes(DWORD count) {
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(nullptr, count, 0, &size);
        _memory = std::make_unique<std::byte[]>(size);
        _isValid = ::InitializeProcThreadAttributeList(get(), count, 0, &size) != 0;
    }
    ~Attributes() {
        if (_isValid) ::DeleteProcThreadAttributeList(get());
    }
    Attributes(Attributes const&) = delete;
    Attributes& operator=(Attributes const&) = delete;

    /// @param handles must live as long as this object.
    template <std::size_t count>
    bool add(DWORD_PTR attribute, std::array<HANDLE, count>& handles) noexcept {
        return _isValid && ::UpdateProcThreadAttribute(
                               get(), 0, attribute, handles.data(), count * sizeof(HANDLE), nullptr, nullptr) != 0;
    }
    LPPROC_THREAD_ATTRIBUTE_LIST get() const noexcept {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(_memory.get());
    }

private:
    std::unique_ptr<std::byte[]> _memory;
    bool _isValid = false;
};

// Each entry ends with a zero, and the block with an empty entry.
std::wstring blockOf(Vector<LiString> const& environment) {
    std::wstring block;
    for (LiString const& entry : environment)
        block += toUtf16(entry) + L'\0';
    return block + (environment.empty() ? std::wstring(2, L'\0') : std::wstring(1, L'\0'));
}

STARTUPINFOEXW startUpOf(ChildStart const& start, Attributes const& attributes) noexcept {
    STARTUPINFOEXW info{};
    info.StartupInfo.cb = sizeof info;
    info.StartupInfo.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
    info.StartupInfo.wShowWindow = SW_HIDE;
    info.StartupInfo.hStdInput = start.input.get();
    info.StartupInfo.hStdOutput = start.output.get();
    info.StartupInfo.hStdError = start.error.get();
    info.lpAttributeList = attributes.get();
    return info;
}

} // namespace

Handle createJob() noexcept {
    Handle job(::CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits) == 0) return {};
    return job;
}

void releaseJob(Handle const& job) noexcept {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION none{};
    ::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &none, sizeof none);
}

DWORD startChild(ChildStart const& start, StartedChild& child) {
    std::array streams{start.input.get(), start.output.get(), start.error.get()};
    std::array job{start.job.get()};
    Attributes attributes(2);
    // In the job from its first instruction on: there is no moment in which it would outlive this process.
    if (!attributes.add(PROC_THREAD_ATTRIBUTE_HANDLE_LIST, streams) ||
        !attributes.add(PROC_THREAD_ATTRIBUTE_JOB_LIST, job))
        return ::GetLastError();
    // The system writes into the command line.
    std::wstring commandLine = toUtf16(start.commandLine);
    std::wstring environment = blockOf(start.environment);
    std::wstring const folder = toUtf16(start.folder);
    STARTUPINFOEXW info = startUpOf(start, attributes);
    PROCESS_INFORMATION process{};
    constexpr DWORD flags =
        CREATE_NEW_PROCESS_GROUP | IDLE_PRIORITY_CLASS | CREATE_UNICODE_ENVIRONMENT | EXTENDED_STARTUPINFO_PRESENT;
    if (::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, flags, environment.data(),
            folder.empty() ? nullptr : folder.c_str(), &info.StartupInfo, &process) == 0)
        return ::GetLastError();
    Handle const thread(process.hThread);
    child = {Handle(process.hProcess), process.dwProcessId};
    return ERROR_SUCCESS;
}

} // namespace Ko
