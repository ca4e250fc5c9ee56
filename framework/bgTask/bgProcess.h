#pragma once

#include "base/oPtr.h"
#include "framework/bgTask/bgJobProtocol.h"

#include <map>
#include <string>

namespace Ko {

/// A background job that runs an external program and ends with it:
///
///     class Encode : public BgProcess {
///     public:
///         Encode() : BgProcess("Encode film.mov", "encoder 'film.mov' --quality 5", "encode") {}
///     protected:
///         void processOutputString(std::string const& line) override { show(line); }
///     };
///
/// The program's words are separated as by a shell, but nothing is expanded; who needs a shell writes `sh -c '...'`. It gets
/// the environment that this process had when the job was made, and an input that stays empty. It has a process group
/// of its own, yields to all other work, and ends when this process ends.
///
/// When other programs run already, the next one waits until enough memory is free, and until the one before has run for
/// a while, or has ended. The environment says how much and how long: `KO_BGEXEC_MIN_MEM` (MiB of free physical
/// memory, 512), `KO_BGEXEC_MIN_MEM_PERCENT` (the free share, 20), `KO_BGEXEC_MIN_SWAP_FREE` (MiB of free page file beyond
/// that, 512), `KO_BGEXEC_WAIT_TIME` (seconds, 15).
class KO_FRAMEWORK_API BgProcess : public BgJobProtocol {
public:
    /// The job's name is "unnamed process".
    /// @param execStr the command line. An empty one makes a job that does nothing.
    /// @throws ExAssertionFailed when this process's environment has an entry without "=", or outside the package's lifetime.
    BgProcess(std::string const& execStr, std::string const& description);
    BgProcess(std::string const& name, std::string const& execStr, std::string const& description);
    ~BgProcess() override;

    /// @throws BgEx::ExBgTaskFailed when the program cannot be started (the log says why), or what `handleExit` or another
    ///   hook throws; the program is ended then.
    void execute() override;
    /// Asks the program and all of its group to end, and ends it after 15 seconds. Waits for that, unless it is called by
    /// a hook. Any thread.
    void stop() override;
    /// Lets a program that runs go on by itself: the job completes without waiting for it, and without `handleExit`. Any
    /// thread.
    void detach();

    /// Sets or replaces a variable of the program's environment. Not while the job executes.
    void addEnvironmentVariable(std::string const& name, std::string const& value);
    /// The command line as it was given.
    std::string const& getExecutionStr() const noexcept { return _execStr; }

    /// For the package's hooks:
    static void performInitialize();
    static void performFinalize();

protected:
    /// Called on the worker with each line of the program's standard output, without its end ("\n" or "\r\n"). The
    /// unfinished last lines of its output, and then of its standard error, come here too.
    virtual void processOutputString(std::string const& line);
    /// Called on the worker with each complete line of the program's standard error.
    virtual void processErrorString(std::string const& line);
    /// Called on the worker when the program has ended. Reports the job as complete when the code is 0, or 0xC000013A,
    /// which stands for the break of `stop()`.
    /// @param exitCode 128 plus its number when another signal ended the program; 0 when `stop()` had to end it.
    /// @throws BgEx::ExBgTaskFailed for another code.
    virtual void handleExit(int exitCode);

private:
    class Imp;

    std::string _execStr;
    std::map<std::string, std::string> _environment;
    OPtr<Imp> _imp;
};

} // namespace Ko
