#include "base/assertions.h"

#include "base/exBase.h"

#include <atomic>
#include <iostream>

namespace Ko {

namespace {

void printFatalError(std::string const& text) noexcept {
    std::cerr << text << std::endl;
}

// Set once by the logging library while it is loaded; after that, any thread may read it.
std::atomic<Assertions::FatalErrorHandler> fatalErrorHandler{&printFatalError};

} // namespace

void Assertions::throwAssertionFailed(char const* file, int line, char const* expression) {
    throw ExAssertionFailed(file, line, expression);
}

void Assertions::throwProgramAborted(char const* file, int line, std::string const& reason) {
    fatalErrorHandler.load()("Program aborted: " + reason + " (" + file + ", line " + std::to_string(line) + ")");
    throw ExProgramAborted(file, line, reason);
}

void Assertions::setFatalErrorHandler(FatalErrorHandler handler) noexcept {
    fatalErrorHandler = handler;
}

} // namespace Ko
