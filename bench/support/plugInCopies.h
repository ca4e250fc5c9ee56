#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace KoBench {

/// A temporary folder, removed by the destructor.
class Folder {
public:
    explicit Folder(std::string const& name)
        : _path(std::filesystem::temp_directory_path() / (name + std::to_string(::getpid()))) {
        std::filesystem::create_directories(_path);
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;

    std::string file(std::string const& name) const { return (_path / name).string(); }
    std::string path() const { return _path.string(); }

private:
    std::filesystem::path _path;
};

/// Copies the plug-in `copies` times into the folder.
inline std::vector<std::string> copyPlugIn(Folder const& folder, char const* plugIn, int copies) {
    std::vector<std::string> paths;
    for (int index = 0; index < copies; ++index) {
        paths.push_back(folder.file("plugIn" + std::to_string(index) + ".op.so"));
        std::filesystem::copy_file(plugIn, paths.back());
    }
    return paths;
}

/// The seconds that `load` takes to load `plugIns` plug-ins, or -1 if it has not loaded all. Measured in a child process, as a
/// process opens a library once.
template <class Load>
double secondsInChild(int plugIns, Load load) {
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    pid_t const child = ::fork();
    if (child == 0) {
        auto const begin = std::chrono::steady_clock::now();
        int const loaded = load();
        std::chrono::duration<double> const passed = std::chrono::steady_clock::now() - begin;
        double const seconds = loaded == plugIns ? passed.count() : -1.0;
        ::_exit(::write(ends[1], &seconds, sizeof seconds) == sizeof seconds ? 0 : 1);
    }
    double seconds = -1.0;
    if (::read(ends[0], &seconds, sizeof seconds) != sizeof seconds) seconds = -1.0;
    ::waitpid(child, nullptr, 0);
    ::close(ends[0]);
    ::close(ends[1]);
    return seconds;
}

} // namespace KoBench
