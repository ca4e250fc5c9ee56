#include "image/inputFile.h"

#include <cerrno>
#include <system_error>

namespace compositor {

InputFile::InputFile(std::filesystem::path const& path) {
    auto const fail = [&path](std::string const& reason) {
        throw ImageError(std::string(path.c_str()) + " cannot be read: " + reason);
    };
    if (path.native().find('\0') != std::string::npos) fail("its name contains a zero byte");
    std::error_code error;
    auto const status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status)) fail("it is a directory");
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) fail("it is not a file");
    errno = 0;
    stream.open(path, std::ios::binary);
    if (!stream) fail(std::generic_category().message(errno != 0 ? errno : EIO));
    length = std::filesystem::file_size(path, error);
    if (error) fail(error.message());
}

} // namespace compositor
