#include "framework/bgTask/src/bgProcessReader.h"

#include "framework/bgTask/src/bgProcessLog.h"

#include <algorithm>

namespace Ko {

namespace {

constexpr int readingErrorsFailed = 549;
constexpr int checkingForErrorsFailed = 597;

constexpr std::size_t pieceSize = 1024;
// At most this many pieces per turn, so that one stream cannot starve the other, or hide the end of the child.
constexpr std::size_t piecesPerTurn = 64;
constexpr auto longestRestAfterStop = std::chrono::seconds(1);

} // namespace

void BgProcess::Reader::begin() {
    _isLimited = false;
    _nextPass = Clock::now();
    _output = {};
    _errors = {};
}

bool BgProcess::Reader::readPieces() {
    std::size_t pieces = 0;
    // After a stop the caller looks for the end of the child between any two pieces.
    while (pieces < (isLimited() ? 1 : piecesPerTurn) && readOutput(pieceSize) > 0)
        ++pieces;
    auto const errors = std::min(countErrors(readingErrorsFailed), piecesPerTurn * pieceSize);
    return readAll(errors, &Reader::readErrors, Clock::time_point::max()) > 0 || pieces > 0;
}

BgProcess::Reader::Clock::time_point BgProcess::Reader::getDue() const noexcept {
    return _output.batch.isEmpty() && _errors.batch.isEmpty() ? Clock::time_point::max() : _nextPass;
}

// Looks at the time and the bounds once a piece. Not inlined: that would slow down the loop over single lines.
[[gnu::noinline]] void BgProcess::Reader::gather(Stream& stream, std::string_view piece) {
    stream.lines.add(piece, [&stream](std::string const& line) { stream.batch.add(line); });
    bool const isEmpty = _output.batch.isEmpty() && _errors.batch.isEmpty();
    bool const isFull = _output.batch.isFull() || _errors.batch.isFull();
    if (isEmpty || (!isFull && Clock::now() < _nextPass)) return;
    passOutput();
    passErrors();
    _nextPass = Clock::now() + *_interval; // NOLINT(bugprone-unchecked-optional-access): called only with one
}

void BgProcess::Reader::passOutput() {
    _output.batch.pass([this](Vector<std::string> const& lines) { _process.processOutputStrings(lines); });
}

void BgProcess::Reader::passErrors() {
    _errors.batch.pass([this](Vector<std::string> const& lines) { _process.processErrorStrings(lines); });
}

bool BgProcess::Reader::hasErrors() const {
    return countErrors(checkingForErrorsFailed) > 0;
}

void BgProcess::Reader::readRest() {
    auto const output = _child.countUnreadOutput();
    auto const errors = countErrors(readingErrorsFailed);
    auto const deadline = Clock::now() + longestRestAfterStop;
    auto const unreadOutput = output - readAll(output, &Reader::readOutput, deadline);
    auto const unreadErrors = errors - readAll(errors, &Reader::readErrors, deadline);
    if (isLimited()) {
        _output.dropped += unreadOutput;
        _errors.dropped += unreadErrors;
        logDropped();
    }
    passRest();
}

// A line that was cut by the limit is dropped with the rest.
void BgProcess::Reader::passRest() {
    passOutput();
    passErrors();
    for (Stream const* const stream : {&_output, &_errors}) {
        if (!stream->hasUnfinished()) continue;
        if (_interval)
            _output.batch.add(stream->lines.getUnfinished());
        else
            _process.processOutputString(stream->lines.getUnfinished());
    }
    passOutput();
    // Ended jobs may be kept for long.
    _output.batch = {};
    _errors.batch = {};
}

// The deadline holds only for a limited reader. Returns how many bytes were read.
std::uint64_t BgProcess::Reader::readAll(
    std::uint64_t bytes, std::size_t (Reader::*read)(std::uint64_t), Clock::time_point deadline) {
    std::uint64_t done = 0;
    while (done < bytes && !(isLimited() && Clock::now() >= deadline)) {
        std::size_t const count = (this->*read)(bytes - done);
        if (count == 0) break;
        done += count;
    }
    return done;
}

// What the hooks do not get any more stays in the file. Flattened: a short line costs half as much again where the compiler
// does not inline the copy, and whether it does depends on the rest of the library.
[[gnu::flatten]] std::size_t BgProcess::Reader::readOutput(std::uint64_t size) {
    std::uint64_t const allowed = isLimited() ? _output.allowed : pieceSize;
    std::string_view const piece =
        _child.readOutput(static_cast<std::size_t>(std::min({size, allowed, std::uint64_t{pieceSize}})));
    if (isLimited()) _output.allowed -= piece.size();
    if (_interval)
        gather(_output, piece);
    else
        _output.lines.add(piece, [this](std::string const& line) { _process.processOutputString(line); });
    return piece.size();
}

// The pipe is always drained, so that the child cannot block on it.
std::size_t BgProcess::Reader::readErrors(std::uint64_t size) {
    std::string_view const piece = _child.readError(static_cast<std::size_t>(std::min<std::uint64_t>(size, pieceSize)));
    std::string_view passed = piece;
    if (isLimited()) {
        passed = piece.substr(0, static_cast<std::size_t>(_errors.allowed));
        _errors.allowed -= passed.size();
        _errors.dropped += piece.size() - passed.size();
    }
    if (_interval)
        gather(_errors, passed);
    else
        _errors.lines.add(passed, [this](std::string const& line) { _process.processErrorString(line); });
    return piece.size();
}

std::size_t BgProcess::Reader::countErrors(int line) const {
    std::size_t waiting = 0;
    if (!_child.peekError(waiting)) bgProcessSource.abort("PeekNamedPipe failed", line);
    return waiting;
}

void BgProcess::Reader::logDropped() const {
    if (_output.dropped == 0 && _errors.dropped == 0) return;
    logProcess(3, [this] {
        return "Process \"" + _process.getExecutionStr() + "\" was stopped: " + std::to_string(_output.dropped) +
               " bytes of its output and " + std::to_string(_errors.dropped) + " bytes of its errors were dropped.";
    });
}

} // namespace Ko
