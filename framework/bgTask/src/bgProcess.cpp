#include "framework/bgTask/bgProcess.h"

#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/src/bgProcessImp.h"
#include "framework/bgTask/src/bgProcessLog.h"
#include "resmgt/osEnv.h"

#include <string_view>

namespace Ko {

namespace {

constexpr int exitWithError = 706;

std::map<std::string, std::string> readEnvironment() {
    std::map<std::string, std::string> variables;
    for (LiString const& entry : OsEnv::getEntries()) {
        auto const eqIdx = entry.find('=');
        bgProcessSource.require(eqIdx != std::string::npos, "eqIdx != std::string::npos");
        variables[entry.substr(0, eqIdx)] = entry.substr(eqIdx + 1);
    }
    return variables;
}

// The system would take another name, or less of the value.
void requireVariable(std::string const& name, std::string const& value) {
    auto const refuse = [](std::string const& reason, int line = __builtin_LINE()) {
        throw ExInternalError(bgProcessSourceName, line, reason);
    };
    if (name.empty()) refuse("The name of an environment variable is empty.");
    if (name.find_first_of(std::string_view("=\0", 2)) != std::string::npos)
        refuse("The name of the environment variable \"" + name + "\" contains \"=\" or a zero byte.");
    if (value.find('\0') != std::string::npos)
        refuse("The value of the environment variable \"" + name + "\" contains a zero byte.");
}

} // namespace

BgProcess::BgProcess(std::string const& execStr, std::string const& description)
    : BgProcess("unnamed process", execStr, description) {}
BgProcess::BgProcess(std::string const& name, std::string const& execStr, std::string const& description)
    : BgJobProtocol(name, description), _execStr(execStr), _environment(readEnvironment()),
      _imp(std::make_unique<Imp>(*this)) {}
BgProcess::~BgProcess() = default;

void BgProcess::execute() {
    if (!_execStr.empty()) _imp->execute();
}

void BgProcess::stop() {
    _imp->stop();
}

void BgProcess::detach() {
    _imp->detach();
}

void BgProcess::addEnvironmentVariable(std::string const& name, std::string const& value) {
    requireVariable(name, value);
    _environment[name] = value;
}

void BgProcess::setWorkingFolder(std::string const& folder) {
    _imp->setWorkingFolder(folder);
}

void BgProcess::setStopGrace(std::chrono::milliseconds grace) {
    _imp->setStopGrace(grace);
}

void BgProcess::gatherLines(std::chrono::milliseconds interval) {
    _imp->gatherLines(interval);
}

std::size_t BgProcess::write(std::string_view bytes) {
    return _imp->write(bytes);
}

void BgProcess::closeInput() {
    _imp->closeInput();
}

std::size_t BgProcess::countWaitingInput() const {
    return _imp->getInput().countWaiting();
}

bool BgProcess::isInputOpen() const {
    return _imp->getInput().isOpen();
}

std::optional<OsResourceUse> BgProcess::getResourceUse() const {
    return _imp->getResourceUse();
}

void BgProcess::performInitialize() {
    Imp::performInitialize();
}

void BgProcess::performFinalize() {
    Imp::performFinalize();
}

void BgProcess::processOutputString(std::string const&) {}
void BgProcess::processErrorString(std::string const&) {}

void BgProcess::handleExit(int exitCode) {
    if (exitCode != 0 && exitCode != OsChildProcess::endedByBreak)
        throw BgEx::ExBgTaskFailed(bgProcessSourceName, exitWithError,
            "External process terminated with return value " + std::to_string(exitCode));
    reportProgress(1, 1);
}

void BgProcess::processOutputStrings(Vector<std::string> const& lines) {
    for (std::string const& line : lines)
        processOutputString(line);
}

void BgProcess::processErrorStrings(Vector<std::string> const& lines) {
    for (std::string const& line : lines)
        processErrorString(line);
}

void BgProcess::provideInput() {}

} // namespace Ko
