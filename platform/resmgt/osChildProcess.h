#pragma once

#include "resmgt/liString.h"
#include "resmgt/osResourceUse.h"
#include "resmgt/resmgtApi.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace Ko {

/// A program that runs as a child of this process, from its launch to its end, with the text that it writes.
///
/// The child leads a process group of its own and has the lowest priority. It inherits no descriptor. Its standard input is
/// a pipe, its standard output a file without a name, which never blocks it, and its standard error a pipe. The child is
/// killed when this process ends, in whatever way, unless it was detached before.
///
/// One thread launches the child, watches it, and calls `forget()`. Other threads may call only the functions marked "any
/// thread". The host must not ignore SIGCHLD, and must not wait for children that it did not start.
class KO_RESMGT_API OsChildProcess {
public:
    /// The result of a launch: a child runs, a pipe for it could not be created, or it could not be started otherwise.
    enum class Launch { Started, NoInputPipe, NoErrorPipe, Failed };

    /// The exit code of a child that still runs.
    static constexpr int stillActive = 259;
    /// The exit code of a child that was ended by a break.
    static constexpr int endedByBreak = static_cast<int>(0xC000013A);

    OsChildProcess();
    /// Terminates and forgets an attached child.
    ~OsChildProcess();
    OsChildProcess(OsChildProcess const&) = delete;
    OsChildProcess& operator=(OsChildProcess const&) = delete;

    /// Sets the folder in which the next programs run. A relative path of a program, also one found by a relative entry of
    /// the search path, starts at this folder.
    /// @param folder empty for the current folder of this process; a relative one starts there.
    void setWorkingFolder(LiString const& folder);
    /// Starts a program.
    /// @param commandLine words separated by blanks. Single quotes, double quotes and backslashes work as in a shell, but
    ///   nothing is expanded and no shell is started. A program without a slash is searched for in the PATH of
    ///   `environment`.
    /// @param environment entries of the form "NAME=value".
    /// @returns a value other than `Started` when no child runs; `getLaunchError()` says why.
    /// @throws ExAssertionFailed while a child is attached or not yet forgotten.
    [[nodiscard]] Launch launch(LiString const& commandLine, Vector<LiString> const& environment);
    /// Why the last launch failed: the reason in the system's words, or the mistake in the arguments.
    [[nodiscard]] LiString const& getLaunchError() const noexcept;

    /// Reads the next bytes of the child's standard output. Does not wait. A program that reopens its output by name
    /// truncates the file; the next bytes are then the ones at its start.
    /// @param size the maximum.
    /// @returns a view that is valid up to the next call; empty when there is nothing more at present.
    [[nodiscard]] std::string_view readOutput(std::size_t size);
    /// The number of bytes of the child's standard output that were not read yet.
    [[nodiscard]] std::uint64_t countUnreadOutput() const;
    /// Gives the number of bytes that wait in the pipe of the child's standard error.
    /// @returns false when the system call fails.
    [[nodiscard]] bool peekError(std::size_t& waiting) const;
    /// Reads the next bytes of the child's standard error. Does not wait.
    /// @param size the maximum.
    /// @returns a view that is valid up to the next call; empty when there is nothing at present.
    [[nodiscard]] std::string_view readError(std::size_t size);

    /// Writes to the child's standard input as much as its pipe takes at present. Does not wait, and raises no SIGPIPE.
    /// @returns how many bytes were written; nothing when the child closed its input, or `closeInput()` was called.
    [[nodiscard]] std::optional<std::size_t> writeInput(std::string_view bytes);
    /// Ends the child's standard input.
    void closeInput();

    /// Gives the child's exit code: `stillActive`, the value that the program returned, `endedByBreak`, the code given to
    /// `terminate`, or 128 plus the number of another signal that ended it.
    /// @returns false when the system call fails.
    [[nodiscard]] bool getExitCode(int& exitCode) const;
    /// Waits until the child ends, writes to its standard error or is detached, until `wake()` is called, or, after a
    /// `writeInput` that did not write all bytes, until the pipe takes more or the child closes its input.
    /// @param seconds the maximum.
    void nap(double seconds);
    /// Ends the present nap or the next one. Any thread.
    void wake();
    /// Notes how much memory the running child has used up to now, for `getResourceUse()`: at the end, the system knows it
    /// only of a child that was larger than this process.
    void noteMemory();

    /// Whether there is a child that was neither forgotten nor detached. Any thread.
    [[nodiscard]] bool isAttached() const;
    /// Asks the child's process group to end, by an interrupt. When the child has ended, the rest of the group is
    /// terminated. Any thread. Never reaches an unrelated process that reuses the child's number.
    /// @returns whether the signal was sent.
    bool sendBreak();
    /// Kills the child's process group. Any thread. Never reaches an unrelated process that reuses the child's number.
    /// @param exitCode the value that `getExitCode` gives for a child killed by this call.
    /// @returns whether the signal was sent.
    bool terminate(int exitCode);
    /// Lets the child run on alone, also after the end of this process. Its standard error is read and dropped by a
    /// program of the system, `cat`. Any thread.
    void detach();

    /// Ends the child's standard input, waits for its end, unless it was detached, and releases its descriptors here.
    /// @returns false when the system did not know the child any more.
    bool forget();
    /// What the last child used; nothing before it was forgotten, for a detached one, and where the system does not report
    /// it. Any thread.
    [[nodiscard]] std::optional<OsResourceUse> getResourceUse() const;

    /// Ends the thread that looks after detached children. For the package's hooks.
    static void finalize();

private:
    void waitForEnd();

    class Imp;
    std::unique_ptr<Imp> _imp;
};

} // namespace Ko
