#include "resmgt/src/environment/systemMemory.h"

#include <fstream>
#include <map>
#include <string>
#include <unistd.h>

namespace Ko {

namespace {

using Figures = std::map<std::string, std::uint64_t>;

// Lines such as "MemTotal:       24682072 kB".
Figures readFigures() {
    Figures figures;
    std::ifstream file("/proc/meminfo");
    std::string name;
    std::uint64_t kilobytes = 0;
    for (std::string rest; file >> name >> kilobytes; std::getline(file, rest))
        figures[name] = kilobytes << 10;
    return figures;
}

std::uint64_t countPages(int variable) {
    long const pages = ::sysconf(variable);
    return pages < 0 ? 0 : static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

bool hasCommitLimit() {
    int mode = 0;
    std::ifstream("/proc/sys/vm/overcommit_memory") >> mode;
    return mode == 2;
}

// Only a system with a commit limit knows the figure. Otherwise physical memory and page file back the promises, beyond the
// free physical memory that new work takes first.
std::uint64_t promisable(Figures& figures) {
    if (!hasCommitLimit()) return 2 * figures["MemAvailable:"] + figures["SwapFree:"];
    std::uint64_t const limit = figures["CommitLimit:"];
    std::uint64_t const promised = figures["Committed_AS:"];
    return limit > promised ? limit - promised : 0;
}

} // namespace

OsMemoryArch::Memory readSystemMemory() {
    Figures figures = readFigures();
    if (figures.contains("MemAvailable:")) return {figures["MemAvailable:"], figures["MemTotal:"], promisable(figures)};
    std::uint64_t const free = countPages(_SC_AVPHYS_PAGES);
    return {free, countPages(_SC_PHYS_PAGES), 2 * free};
}

} // namespace Ko
