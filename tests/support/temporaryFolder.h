#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace KoTest {

/// A new folder, removed with its content by the destructor.
class TemporaryFolder {
public:
    TemporaryFolder()
        : _path(std::filesystem::temp_directory_path() / ("ko" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directories(_path);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path operator/(std::string const& name) const { return _path / name; }

    std::filesystem::path write(std::string const& name, std::string_view content) const {
        std::filesystem::path const path = _path / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }
    std::string read(std::string const& name) const {
        std::ifstream file(_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// The number of files and folders directly in it.
    std::ptrdiff_t entries() const {
        return std::distance(std::filesystem::directory_iterator(_path), std::filesystem::directory_iterator());
    }

private:
    std::filesystem::path _path;
};

} // namespace KoTest
