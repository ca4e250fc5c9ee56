#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace Ko {

/// A program that runs as a child of this process, from its launch to its end, and what it writes.
///
/// The child has a process group of its own and the priority of work that can wait; it runs in the current directory and
/// has none of this process's descriptors. Its standard input is a pipe that stays empty, its standard error another one,
/// its standard output a file without a name, which never makes it wait. It ends when this process ends, however that
/// happens, unless it was detached before.
///
/// One thread launches the child, watches it, and forgets it. Only where "any thread" is said may others call. The host
/// must neither ignore the system's signal of a child's end nor wait for children that it did not start.
class KO_RESMGT_API OsChildProcess {
public:
    /// How a launch ended: there is a child, or a pipe for it could not be made, or the program could not be started.
    enum class Launch { Started, NoInputPipe, NoErrorPipe, Failed };

    /// What `getExitCode` gives for a child that runs.
    static constexpr int stillActive = 259;
    /// The exit code of a child that was ended by a break.
    static constexpr int endedByBreak = static_cast<int>(0xC000013A);

    OsChildProcess();
    /// Terminates and forgets a child that is attached.
    ~OsChildProcess();
    OsChildProcess(OsChildProcess const&) = delete;
    OsChildProcess& operator=(OsChildProcess const&) = delete;

    /// Starts a program. Its words are separated by blanks; what stands in single or double quotes, or behind a backslash,
    /// is taken as it is, as a shell does it. Nothing is expanded and no shell is started. A program without a slash
    /// is looked for in the PATH of `environment`.
    /// @param environment "NAME=value" each.
    /// @returns something else than `Started` when there is no child; `getLaunchError()` then says why.
    /// @throws ExAssertionFailed while a child is attached or not yet forgotten.
    Launch launch(LiString const& commandLine, Vector<LiString> const& environment);
    /// Why the last launch failed, in the system's words.
    LiString const& getLaunchError() const noexcept;

    /// Reads the next bytes of the child's standard output, at most so many. Does not wait.
    /// @returns them, to be used before the next call; none when there are no more now.
    std::string_view readOutput(std::size_t size);
    /// How many bytes of the child's standard output were not read yet.
    std::uint64_t countUnreadOutput() const;
    /// Asks how many bytes wait in the pipe of the child's standard error.
    /// @returns false when the system does not tell.
    bool peekError(std::size_t& waiting) const;
    /// Reads bytes that wait there, at most so many, and waits when there are none.
    /// @returns them, to be used before the next call.
    std::string_view readError(std::size_t size);

    /// Gives the exit code of the child, or `stillActive`: what the program returned, `endedByBreak`, the code given to
    /// `terminate`, or 128 plus the number of another signal that ended it.
    /// @returns false when the system does not tell.
    bool getExitCode(int& exitCode) const;
    /// Waits so many seconds, or until the child ends, writes to its standard error, or is detached.
    void nap(double seconds);

    /// Whether there is a child that was neither forgotten nor detached. Any thread.
    bool isAttached() const;
    /// Asks the child's process group to end. Whatever is left of the group when the child has ended is terminated. Any
    /// thread; never meets a process that only got the number of one that has ended.
    /// @returns whether there was somebody to ask.
    bool sendBreak();
    /// Ends the child's process group. Any thread, as above. @param exitCode what `getExitCode` gives from then on.
    bool terminate(int exitCode);
    /// Lets the child live on by itself, also when this process ends. Any thread.
    void detach();

    /// Waits for the child's end, unless it was detached, and releases all that belongs to it here.
    /// @returns false when the system did not know the child any more.
    bool forget();

    /// Ends what this class does in the background for detached children. For the package's hooks.
    static void finalize();

private:
    void waitForEnd();

    class Imp;
    std::unique_ptr<Imp> _imp;
};

} // namespace Ko
