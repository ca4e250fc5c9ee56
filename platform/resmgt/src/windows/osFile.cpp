#include "resmgt/osFile.h"

#include "resmgt/src/windows/handle.h"
#include "resmgt/src/windows/systemError.h"
#include "resmgt/src/windows/utf16.h"

#include <algorithm>
#include <array>
#include <random>
#include <string_view>

namespace Ko {

namespace {

constexpr char const* readName = "OsFile::read";
constexpr char const* replaceName = "OsFile::replace";
constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

[[noreturn]] void fail(char const* function, OsFilePath const& path, LiString const& problem) {
    throw OsFileEx::ExInvalidPath("resmgt\\src\\windows\\osFile", __LINE__, function, path, problem);
}

void check(bool succeeded, char const* function, OsFilePath const& path) {
    if (!succeeded) fail(function, path, describeLastError());
}

// Follows links. With no access rights, files that others have opened for themselves can be asked for their properties.
Handle openExisting(OsFilePath const& path, DWORD access) {
    return Handle(::CreateFileW(
        toSystemPath(path).c_str(), access, shareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

// The system counts intervals of 100 ns from the beginning of 1601.
std::chrono::system_clock::time_point toTimePoint(FILETIME const& time) {
    using Intervals = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    constexpr Intervals beginOf1970{116'444'736'000'000'000};
    Intervals const sinceBegin{static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime};
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceBegin - beginOf1970));
}

// The file that a path leads to through links; the path itself where there is none.
std::wstring followLinks(OsFilePath const& path) {
    std::wstring const own = toSystemPath(path);
    if ((::GetFileAttributesW(own.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return own;
    Handle const file = openExisting(path, 0);
    if (!file.isOpen()) return own;
    std::wstring target(::GetFinalPathNameByHandleW(file.get(), nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    target.resize(::GetFinalPathNameByHandleW(
        file.get(), target.data(), static_cast<DWORD>(target.size()), FILE_NAME_NORMALIZED));
    return target.empty() ? own : target;
}

/// The file that takes the place of another one. Without `commit`, it goes.
class Replacement {
public:
    explicit Replacement(OsFilePath const& path) : _path(path), _target(followLinks(path)) {
        do {
            _name = _target + L"." + std::to_wstring(std::random_device()()) + L".part";
            _file = Handle(
                ::CreateFileW(_name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        } while (!_file.isOpen() && ::GetLastError() == ERROR_FILE_EXISTS);
        check(_file.isOpen(), replaceName, path);
    }
    ~Replacement() {
        _file.reset();
        if (!_isCommitted) ::DeleteFileW(_name.c_str());
    }
    Replacement(Replacement const&) = delete;
    Replacement& operator=(Replacement const&) = delete;

    void write(std::string_view content) const {
        constexpr std::size_t mostAtOnce = std::size_t{1} << 30;
        while (!content.empty()) {
            DWORD written = 0;
            auto const size = static_cast<DWORD>(std::min(content.size(), mostAtOnce));
            check(::WriteFile(_file.get(), content.data(), size, &written, nullptr) != 0, replaceName, _path);
            content.remove_prefix(written);
        }
    }
    void commit() {
        check(::FlushFileBuffers(_file.get()) != 0, replaceName, _path);
        _file.reset();
        copyPermissions();
        constexpr DWORD flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
        check(::MoveFileExW(_name.c_str(), _target.c_str(), flags) != 0, replaceName, _path);
        _isCommitted = true;
    }

private:
    // Where the file system has none, or this user may not read them, the new file keeps those of its folder.
    void copyPermissions() const {
        DWORD size = 0;
        ::GetFileSecurityW(_target.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
        Vector<std::byte> permissions(size);
        if (size != 0 &&
            ::GetFileSecurityW(_target.c_str(), DACL_SECURITY_INFORMATION, permissions.data(), size, &size) != 0)
            ::SetFileSecurityW(_name.c_str(), DACL_SECURITY_INFORMATION, permissions.data());
    }

    OsFilePath _path;
    std::wstring _target;
    std::wstring _name;
    Handle _file;
    bool _isCommitted = false;
};

} // namespace

std::optional<OsFile::Info> OsFile::getInfo(OsFilePath const& path) {
    if (path.hasZeroByte() || path.isEmpty()) return std::nullopt;
    Handle const file = openExisting(path, 0);
    BY_HANDLE_FILE_INFORMATION info{};
    if (!file.isOpen() || ::GetFileInformationByHandle(file.get(), &info) == 0) return std::nullopt;
    return Info{(info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
        std::uint64_t{info.nFileSizeHigh} << 32 | info.nFileSizeLow, toTimePoint(info.ftLastWriteTime)};
}

LiString OsFile::read(OsFilePath const& path) {
    if (path.hasZeroByte()) fail(readName, path, "the path contains a zero byte");
    Handle const file = openExisting(path, GENERIC_READ);
    check(file.isOpen(), readName, path);
    BY_HANDLE_FILE_INFORMATION info{};
    bool const isOnDisk =
        ::GetFileType(file.get()) == FILE_TYPE_DISK && ::GetFileInformationByHandle(file.get(), &info) != 0;
    if (!isOnDisk || (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        fail(readName, path, "not an ordinary file");
    LiString content;
    std::array<char, 16384> piece;
    for (;;) {
        DWORD length = 0;
        check(::ReadFile(file.get(), piece.data(), DWORD{piece.size()}, &length, nullptr) != 0, readName, path);
        if (length == 0) return content;
        content.append(piece.data(), length);
    }
}

void OsFile::replace(OsFilePath const& path, LiString const& content) {
    if (path.hasZeroByte()) fail(replaceName, path, "the path contains a zero byte");
    if (auto const info = getInfo(path); info && info->isDirectory) fail(replaceName, path, "a directory");
    Replacement file(path);
    file.write(content);
    file.commit();
}

} // namespace Ko
