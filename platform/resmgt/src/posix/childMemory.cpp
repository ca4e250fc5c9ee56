#include "resmgt/src/posix/childMemory.h"

#include "resmgt/src/posix/descriptor.h"
#include "resmgt/src/posix/interruptedCall.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace Ko {

namespace {

constexpr std::uint64_t kilobyte = 1024;

std::uint64_t peakOf(rusage const& use) noexcept {
    return static_cast<std::uint64_t>(use.ru_maxrss) * kilobyte;
}

// A line such as "VmHWM:     1532 kB".
std::uint64_t peakIn(std::string_view status) noexcept {
    constexpr std::string_view name = "VmHWM:";
    auto const place = status.find(name);
    if (place == std::string_view::npos) return 0;
    auto const digits = status.substr(std::min(status.find_first_of("0123456789", place), status.size()));
    std::uint64_t peak = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), peak);
    return peak * kilobyte;
}

} // namespace

void ChildMemory::begin() noexcept {
    rusage ofThisProcess{};
    ::getrusage(RUSAGE_SELF, &ofThisProcess);
    _ofThisProcess = peakOf(ofThisProcess);
    _noted = 0;
}

void ChildMemory::note(pid_t number) noexcept {
    std::array<char, 32> path;
    std::snprintf(path.data(), path.size(), "/proc/%d/status", static_cast<int>(number));
    Descriptor const file(::open(path.data(), O_RDONLY | O_CLOEXEC));
    std::array<char, 2048> text;
    ssize_t const length = untilDone([&] { return ::read(file.get(), text.data(), text.size()); });
    if (length > 0) _noted = std::max(_noted, peakIn({text.data(), static_cast<std::size_t>(length)}));
}

std::optional<std::uint64_t> ChildMemory::finish(rusage const& atEnd) noexcept {
    std::uint64_t const peak = peakOf(atEnd);
    if (peak > _ofThisProcess) return std::max(peak, _noted);
    return _noted > 0 ? std::optional(_noted) : std::nullopt;
}

} // namespace Ko
