#include "resmgt/src/posix/childStart.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <memory>
#include <sched.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

// The C library's internal name for `clone`, which thread checkers do not intercept as a fork.
extern "C" [[gnu::weak]] int __clone(
    int (*)(void*), void*, int, void*, ...) noexcept; // NOLINT(bugprone-reserved-identifier)

namespace Ko {

namespace {

constexpr int lowestPriority = 19;
constexpr std::size_t stackSize = std::size_t{32} * 1024;
// Serves as the system call's signal set (no signal blocked) and as its signal action (the default one).
constexpr std::size_t signalSetSize = NSIG / 8;
constexpr std::array<std::byte, 256> allZero{};

Vector<char*> pointersTo(Vector<LiString> const& texts) {
    Vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (LiString const& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

std::string_view searchPathOf(Vector<LiString> const& environment) {
    constexpr std::string_view variable = "PATH=";
    for (std::string_view const entry : environment)
        if (entry.starts_with(variable)) return entry.substr(variable.size());
    return "/usr/local/bin:/usr/bin:/bin";
}

// The paths at which a program may lie; an empty folder in the search path stands for the current one.
Vector<LiString> findPaths(LiString const& program, std::string_view searchPath) {
    if (program.empty() || program.find('/') != LiString::npos) return {program};
    Vector<LiString> paths;
    for (bool isLast = false; !isLast;) {
        auto const length = std::min(searchPath.find(':'), searchPath.size());
        std::string_view const folder = searchPath.substr(0, length);
        paths.push_back((folder.empty() ? "." : LiString(folder)) + "/" + program);
        isLast = length == searchPath.size();
        searchPath.remove_prefix(isLast ? length : length + 1);
    }
    return paths;
}

// Everything that needs memory is prepared here, because the child must not allocate.
struct Preparation {
    explicit Preparation(ChildStart const& childStart)
        : start(childStart), pathTexts(findPaths(start.words.front(), searchPathOf(start.environment))),
          paths(pointersTo(pathTexts)), arguments(pointersTo(start.words)), environment(pointersTo(start.environment)),
          mostDescriptors(::sysconf(_SC_OPEN_MAX)), folder(start.folder.empty() ? nullptr : start.folder.c_str()) {}

    ChildStart const& start;
    Vector<LiString> const pathTexts;
    Vector<char*> const paths;
    Vector<char*> const arguments;
    Vector<char*> const environment;
    long const mostDescriptors;
    char const* const folder;
    StartProblem problem;
};

// The functions below run in the child, which shares this process's memory and has a stack of its own; the launching thread
// is suspended until the program has replaced the child. They make system calls only. They make them by number where the
// library's or a checker's function would change bookkeeping that belongs to the parent.

[[gnu::no_sanitize_address, gnu::no_sanitize_thread]] void setStandardStreams(ChildStart const& start) {
    syscall(SYS_dup3, start.input.get(), STDIN_FILENO, 0);
    syscall(SYS_dup3, start.output.get(), STDOUT_FILENO, 0);
    syscall(SYS_dup3, start.error.get(), STDERR_FILENO, 0);
}

[[gnu::no_sanitize_address, gnu::no_sanitize_thread]] void closeOtherDescriptors(long mostDescriptors) {
    constexpr unsigned first = STDERR_FILENO + 1;
    if (syscall(SYS_close_range, first, ~0U, 0) == 0) return;
    for (long number = first; number < mostDescriptors; ++number)
        syscall(SYS_close, number);
}

// The host may ignore or block signals that end programs, and its handlers must not run in the child.
[[gnu::no_sanitize_address, gnu::no_sanitize_thread]] void resetSignals() {
    for (int signal = 1; signal < NSIG; ++signal)
        syscall(SYS_rt_sigaction, signal, allZero.data(), nullptr, signalSetSize);
    syscall(SYS_rt_sigprocmask, SIG_SETMASK, allZero.data(), nullptr, signalSetSize);
}

// Searches like a shell: a file that cannot be executed does not hide an executable later in the search path.
[[gnu::no_sanitize_address, gnu::no_sanitize_thread]] int executeFirst(Preparation const& preparation) {
    int error = ENOENT;
    for (char* const path : preparation.paths) {
        if (!path) break;
        ::execve(path, preparation.arguments.data(), preparation.environment.data());
        if (errno != ENOENT && errno != ENOTDIR) error = errno;
        if (errno != ENOENT && errno != ENOTDIR && errno != EACCES) break;
    }
    return error;
}

[[gnu::no_sanitize_address, gnu::no_sanitize_thread]] bool enterFolder(Preparation const& preparation) {
    return !preparation.folder || syscall(SYS_chdir, preparation.folder) == 0;
}

[[gnu::no_sanitize_address, gnu::no_sanitize_thread]] int becomeProgram(void* argument) {
    auto& preparation = *static_cast<Preparation*>(argument);
    ::setpgid(0, 0);
    preparation.start.lifeline.tieTo(::getpid());
    ::setpriority(PRIO_PROCESS, 0, lowestPriority);
    setStandardStreams(preparation.start);
    closeOtherDescriptors(preparation.mostDescriptors);
    resetSignals();
    if (enterFolder(preparation))
        preparation.problem.error = executeFirst(preparation);
    else
        preparation.problem = {errno, true};
    ::_exit(1);
}

// Keeps handlers of the host from running in the child.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &_before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }
    SignalsBlocked(SignalsBlocked const&) = delete;
    SignalsBlocked& operator=(SignalsBlocked const&) = delete;

private:
    sigset_t _before;
};

// Copies only the descriptor table of this process, so that the cost does not grow with its memory.
pid_t cloneInto(Preparation& preparation, int& process) {
    auto const stack = std::make_unique_for_overwrite<std::byte[]>(stackSize);
    constexpr int shared = CLONE_VM | CLONE_VFORK | CLONE_PIDFD | SIGCHLD;
    SignalsBlocked const blocked;
    auto const cloneProcess = ::__clone ? ::__clone : ::clone;
    return cloneProcess(becomeProgram, stack.get() + stackSize, shared, &preparation, &process);
}

} // namespace

StartProblem startChild(ChildStart const& start, StartedChild& child) {
    Preparation preparation(start);
    int process = -1;
    pid_t const number = cloneInto(preparation, process);
    if (number < 0) return {errno};
    child = {number, Descriptor(process)};
    if (preparation.problem.error == 0) return {};
    siginfo_t ignored;
    ::waitid(P_PIDFD, static_cast<id_t>(process), &ignored, WEXITED);
    child = {};
    return preparation.problem;
}

} // namespace Ko
