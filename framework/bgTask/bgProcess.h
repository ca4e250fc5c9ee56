#pragma once

#include "base/oPtr.h"
#include "framework/bgTask/bgJobProtocol.h"
#include "resmgt/osResourceUse.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace Ko {

/// A background job that runs an external program and ends when the program ends:
///
///     class Encode : public BgProcess {
///     public:
///         Encode() : BgProcess("Encode film.mov", "encoder 'film.mov' --quality 5", "encode") {}
///     protected:
///         void processOutputString(std::string const& line) override { show(line); }
///     };
///
/// The command line is split into words as by a shell, but nothing is expanded; for more, run `sh -c '...'`. The program
/// gets the environment that this process had when the job was created, and a standard input that stays open and empty until
/// bytes are written to it. It leads a process group of its own, runs at the lowest priority, and is killed when this process
/// ends.
///
/// A program starts at once when no other one runs. Otherwise it waits until enough memory is free, and until the
/// previous program has ended or has run for some time; the job's phase says what it waits for. Four environment variables set these limits:
/// `KO_BGEXEC_MIN_MEM` (MiB of free physical memory; default 512), `KO_BGEXEC_MIN_MEM_PERCENT` (free share of the physical
/// memory; 20), `KO_BGEXEC_MIN_SWAP_FREE` (MiB of free page file beyond the free physical memory; 512) and
/// `KO_BGEXEC_WAIT_TIME` (seconds between two launches, and between two checks of the memory; 15).
class KO_FRAMEWORK_API BgProcess : public BgJobProtocol {
public:
    /// Names the job "unnamed process".
    /// @param execStr the command line. An empty one makes a job that does nothing.
    /// @throws ExAssertionFailed when this process's environment has an entry without "=", or outside the package's lifetime.
    BgProcess(std::string const& execStr, std::string const& description);
    /// @param name the job's name. The rest as above.
    BgProcess(std::string const& name, std::string const& execStr, std::string const& description);
    ~BgProcess() override;

    /// Runs the program to its end.
    /// @throws BgEx::ExBgTaskFailed when the program cannot be started (the log says why). Passes on what a hook throws; the
    ///   program is killed in that case.
    void execute() override;
    /// Asks the program and its process group to end, and kills them after the grace period. Waits until the program has
    /// ended; in a hook of any process it does not wait. From the first stop on, at most 1 MiB more of each stream is read for
    /// the hooks; the rest is dropped, with a line in the log. A further stop sends no second break. Any thread.
    void stop() override;
    /// Lets a running program go on alone: the job completes without waiting for it, and without `handleExit`. The program's
    /// input ends. Any thread.
    void detach();

    /// Sets or replaces a variable of the program's environment. Not while the job executes.
    /// @throws ExInternalError when the name is empty or contains "=", or when one of them contains a zero byte.
    void addEnvironmentVariable(std::string const& name, std::string const& value);
    /// Sets the folder in which the program runs; empty, the default, for the current folder of this process at the launch.
    /// A relative path of the program starts there. The launch fails where the folder cannot be entered. Not while the job
    /// executes.
    void setWorkingFolder(std::string const& folder);
    /// How long a stopped program may go on before it is killed; default 15 seconds, 0 kills it at once. Holds for later
    /// stops. Any thread.
    void setStopGrace(std::chrono::milliseconds grace);
    /// Makes the job call `processOutputStrings` and `processErrorStrings` instead of the hooks for single lines, for example
    /// in its constructor. Not while the job executes.
    /// @param interval the shortest time between two calls of the same hook; lines are gathered meanwhile. With 0 they are
    ///   passed on as they are read.
    void gatherLines(std::chrono::milliseconds interval);

    /// How many bytes may wait for the program.
    static constexpr std::size_t inputLimit = std::size_t{1} << 20;
    /// Queues bytes for the program's standard input, also before its launch. Never waits. What the program has not read at
    /// its end is dropped. Any thread.
    /// @returns how many of the bytes were taken, the first ones: fewer when the queue is full, 0 when the input is closed.
    [[nodiscard]] std::size_t write(std::string_view bytes);
    /// Ends the program's standard input after the bytes that wait. Any thread.
    void closeInput();
    /// How many bytes wait for the program to read; what its pipe holds, usually up to 64 KiB, is not counted. Any thread.
    [[nodiscard]] std::size_t countWaitingInput() const;
    /// False after `closeInput()`, after the end of the program, and once it has refused bytes because it closed its input;
    /// that is no failure of the job. Any thread.
    [[nodiscard]] bool isInputOpen() const;

    /// What the program has used: nothing before its end, nor after `detach()`. Known from `handleExit` on. The memory of a
    /// running program is noted twice a second. Any thread.
    [[nodiscard]] std::optional<OsResourceUse> getResourceUse() const;

    /// The command line as it was given.
    [[nodiscard]] std::string const& getExecutionStr() const noexcept { return _execStr; }

    /// Creates the locks that all processes share. For the package's hooks.
    static void performInitialize();
    /// Drops these locks; jobs that still run keep them up to their end. For the package's hooks.
    static void performFinalize();

protected:
    /// Called on the worker with each line of standard output, without its end ("\n" or "\r\n"). At the end it also gets the
    /// unfinished last line of the output, then that of standard error.
    virtual void processOutputString(std::string const& line);
    /// Called on the worker with each complete line of standard error.
    virtual void processErrorString(std::string const& line);
    /// Called on the worker after the end of the program. Reports the job as complete when the code is 0 or 0xC000013A, the
    /// code of a program that the break of `stop()` ended.
    /// @param exitCode 128 plus the signal's number when another signal ended the program; 0 when `stop()` killed it.
    /// @throws BgEx::ExBgTaskFailed for any other code.
    virtual void handleExit(int exitCode);
    /// After `gatherLines`: called on the worker with the lines of standard output that have gathered, never with none. The
    /// last call also gets the unfinished lines. The base class calls `processOutputString` with each line.
    ///
    /// A call comes before its interval is over at the end of the program, and when 65,536 lines or 4 MiB have gathered.
    virtual void processOutputStrings(Vector<std::string> const& lines);
    /// The same for the complete lines of standard error. The base class calls `processErrorString` with each.
    virtual void processErrorStrings(Vector<std::string> const& lines);
    /// Called on the worker when the program can take input: after its launch, and each time that it has taken bytes and
    /// less than half of `inputLimit` waits. Writes the next bytes, or closes the input; the base class does nothing.
    ///
    /// So a large input needs no thread and little memory. Not called after a stop.
    virtual void provideInput();

private:
    class Imp;
    class Reader;

    std::string _execStr;
    std::map<std::string, std::string> _environment;
    OPtr<Imp> _imp;
};

} // namespace Ko
