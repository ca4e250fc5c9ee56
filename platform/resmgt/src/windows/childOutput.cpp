#include "resmgt/src/windows/childOutput.h"

namespace Ko {

namespace {

constexpr DWORD bufferSize = 64 * 1024;

} // namespace

std::wstring ChildOutput::getDirectory() {
    std::wstring directory(MAX_PATH + 1, L'\0');
    directory.resize(::GetTempPathW(static_cast<DWORD>(directory.size()), directory.data()));
    return directory;
}

Handle ChildOutput::create() {
    close();
    std::wstring name(MAX_PATH, L'\0');
    if (::GetTempFileNameW(getDirectory().c_str(), L"OUT", 0, name.data()) == 0) return {};
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    Handle ofChild(::CreateFileW(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, &inheritable,
        CREATE_ALWAYS, FILE_FLAG_WRITE_THROUGH | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!ofChild.isOpen()) return {};
    _file = Handle(::CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!_file.isOpen()) return {};
    _buffer = std::make_unique_for_overwrite<char[]>(bufferSize);
    return ofChild;
}

void ChildOutput::close() noexcept {
    _file.reset();
    _ready = {};
    _position = 0;
}

std::string_view ChildOutput::read(std::size_t size) {
    DWORD count = 0;
    if (_ready.empty() && ::ReadFile(_file.get(), _buffer.get(), bufferSize, &count, nullptr) != 0) {
        _ready = {_buffer.get(), count};
        _position += count;
    }
    std::string_view const result = _ready.substr(0, size);
    _ready.remove_prefix(result.size());
    return result;
}

std::uint64_t ChildOutput::countUnread() const noexcept {
    LARGE_INTEGER length{};
    if (::GetFileSizeEx(_file.get(), &length) == 0) return _ready.size();
    return _ready.size() + (static_cast<std::uint64_t>(length.QuadPart) - _position);
}

} // namespace Ko
