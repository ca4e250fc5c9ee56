#pragma once

#include "base/oPtr.h"
#include "framework/bgTask/bgJobProtocol.h"

#include <map>
#include <string>

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
/// gets the environment that this process had when the job was created, and an empty standard input. It leads a process
/// group of its own, runs at the lowest priority, and is killed when this process ends.
///
/// A program starts at once when no other one runs. Otherwise it waits until enough memory is free, and until the
/// previous program has ended or has run for some time. Four environment variables set these limits:
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
    /// Asks the program and its process group to end, and kills them after 15 seconds. Waits until the program has ended;
    /// in a hook of any process it does not wait. From the first stop on, the hooks get at most 1 MiB more of each stream;
    /// the rest is dropped, with a line in the log. A further stop sends no second break. Any thread.
    void stop() override;
    /// Lets a running program go on alone: the job completes without waiting for it, and without `handleExit`. Any thread.
    void detach();

    /// Sets or replaces a variable of the program's environment. Not while the job executes.
    /// @throws ExInternalError when the name is empty or contains "=", or when one of them contains a zero byte.
    void addEnvironmentVariable(std::string const& name, std::string const& value);
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

private:
    class Imp;
    class Reader;

    std::string _execStr;
    std::map<std::string, std::string> _environment;
    OPtr<Imp> _imp;
};

} // namespace Ko
