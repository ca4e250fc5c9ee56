#include "image/atomicFile.h"

#include <cerrno>
#include <system_error>

namespace compositor {

AtomicFile::AtomicFile(std::filesystem::path path) : _path(std::move(path)) {
    std::error_code error;
    if (std::filesystem::exists(_path, error) && !std::filesystem::is_regular_file(_path, error))
        throw ImageError(_path.string() + " cannot be written: it is not a file");
    // Exclusively: two writers of one path never share their temporary file.
    for (int attempt = 0; !_file && attempt < 100; ++attempt) {
        _temporary = _path;
        _temporary += ".part" + std::to_string(attempt);
        _file.reset(std::fopen(_temporary.c_str(), "wbx"));
        if (!_file && errno != EEXIST) fail(errno);
    }
    if (!_file) fail(EEXIST);
}

AtomicFile::~AtomicFile() {
    if (_temporary.empty()) return;
    _file.reset();
    std::error_code ignored;
    std::filesystem::remove(_temporary, ignored);
}

void AtomicFile::write(void const* bytes, std::size_t count) {
    if (std::fwrite(bytes, 1, count, _file.get()) != count) fail(errno);
}

void AtomicFile::commit() {
    if (std::fflush(_file.get()) != 0 || std::fclose(_file.release()) != 0) fail(errno);
    std::error_code error;
    std::filesystem::rename(_temporary, _path, error);
    if (error) fail(error.value());
    _temporary.clear();
}

void AtomicFile::fail(int error) const {
    throw ImageError(_path.string() + " cannot be written: " + std::generic_category().message(error));
}

} // namespace compositor
