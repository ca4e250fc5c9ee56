#include "resmgt/src/windows/peFile.h"

#include "resmgt/src/programs/librarySection.h"
#include "resmgt/src/windows/handle.h"
#include "resmgt/src/windows/utf16.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Ko {

namespace {

constexpr std::size_t longestName = 4096;
constexpr std::size_t mostNeeded = 1024;

/// The bytes of a file.
class Bytes {
public:
    explicit Bytes(OsFilePath const& path)
        : _file(::CreateFileW(toSystemPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {
        LARGE_INTEGER size{};
        if (_file.isOpen() && ::GetFileSizeEx(_file.get(), &size) != 0)
            _size = static_cast<std::uint64_t>(size.QuadPart);
    }

    bool contains(std::uint64_t offset, std::uint64_t length) const noexcept {
        return offset <= _size && length <= _size - offset;
    }
    bool read(std::uint64_t offset, void* target, std::size_t length) const noexcept {
        if (!contains(offset, length)) return false;
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD count = 0;
        return ::ReadFile(_file.get(), target, static_cast<DWORD>(length), &count, &place) != 0 && count == length;
    }
    template <class Record>
    std::optional<Record> get(std::uint64_t offset) const noexcept {
        Record record{};
        return read(offset, &record, sizeof record) ? std::optional(record) : std::nullopt;
    }
    // A text that ends with a zero byte; nothing where the file ends before.
    std::optional<LiString> text(std::uint64_t offset) const {
        LiString text;
        for (auto next = get<char>(offset); next && text.size() < longestName; next = get<char>(offset + text.size())) {
            if (*next == '\0') return text;
            text += *next;
        }
        return std::nullopt;
    }

private:
    Handle _file;
    std::uint64_t _size = 0;
};

struct Headers {
    IMAGE_FILE_HEADER file;
    IMAGE_NT_HEADERS nt;
    Vector<IMAGE_SECTION_HEADER> sections;
};

WORD machineOfThisProcess() noexcept {
    auto const* const start = reinterpret_cast<std::byte const*>(::GetModuleHandleW(nullptr));
    auto const& dos = *reinterpret_cast<IMAGE_DOS_HEADER const*>(start);
    return reinterpret_cast<IMAGE_NT_HEADERS const*>(start + dos.e_lfanew)->FileHeader.Machine;
}

// Nothing for a file that is no library for this machine, or ends before its table of sections.
std::optional<Headers> readHeaders(Bytes const& bytes) {
    auto const dos = bytes.get<IMAGE_DOS_HEADER>(0);
    if (!dos || dos->e_magic != IMAGE_DOS_SIGNATURE || dos->e_lfanew < 0) return std::nullopt;
    auto const start = static_cast<std::uint64_t>(dos->e_lfanew);
    auto const nt = bytes.get<IMAGE_NT_HEADERS>(start);
    if (!nt || nt->Signature != IMAGE_NT_SIGNATURE || nt->FileHeader.Machine != machineOfThisProcess() ||
        nt->OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR_MAGIC)
        return std::nullopt;
    Headers headers{nt->FileHeader, *nt, Vector<IMAGE_SECTION_HEADER>(nt->FileHeader.NumberOfSections)};
    std::uint64_t const table =
        start + offsetof(IMAGE_NT_HEADERS, OptionalHeader) + nt->FileHeader.SizeOfOptionalHeader;
    std::size_t const size = headers.sections.size() * sizeof(IMAGE_SECTION_HEADER);
    return bytes.read(table, headers.sections.data(), size) ? std::optional(std::move(headers)) : std::nullopt;
}

bool isComplete(Bytes const& bytes, IMAGE_SECTION_HEADER const& section) noexcept {
    return section.SizeOfRawData == 0 || bytes.contains(section.PointerToRawData, section.SizeOfRawData);
}

// The place in the file of an address of the loaded library.
std::optional<std::uint64_t> offsetOf(Headers const& headers, std::uint32_t address) {
    for (IMAGE_SECTION_HEADER const& section : headers.sections)
        if (address >= section.VirtualAddress && address - section.VirtualAddress < section.SizeOfRawData)
            return std::uint64_t{section.PointerToRawData} + (address - section.VirtualAddress);
    return std::nullopt;
}

Vector<LiString> readNeeded(Bytes const& bytes, Headers const& headers) {
    auto const& directory = headers.nt.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    auto offset = offsetOf(headers, directory.VirtualAddress);
    Vector<LiString> names;
    while (offset && names.size() < mostNeeded) {
        auto const import = bytes.get<IMAGE_IMPORT_DESCRIPTOR>(*offset);
        if (!import || import->Name == 0) break;
        auto const place = offsetOf(headers, import->Name);
        auto name = place ? bytes.text(*place) : std::nullopt;
        if (!name) break;
        names.push_back(*std::move(name));
        *offset += sizeof(IMAGE_IMPORT_DESCRIPTOR);
    }
    return names;
}

// Names of more than eight bytes stand in the table of texts after the symbols, as "/" and their place in decimal.
std::optional<LiString> nameOf(Bytes const& bytes, IMAGE_FILE_HEADER const& file, IMAGE_SECTION_HEADER const& section) {
    std::string_view const field(reinterpret_cast<char const*>(section.Name), IMAGE_SIZEOF_SHORT_NAME);
    std::string_view const shortName = field.substr(0, field.find('\0'));
    if (!shortName.starts_with('/')) return LiString(shortName);
    std::uint32_t place = 0;
    std::from_chars(shortName.data() + 1, shortName.data() + shortName.size(), place);
    std::uint64_t const texts = file.PointerToSymbolTable + std::uint64_t{file.NumberOfSymbols} * IMAGE_SIZEOF_SYMBOL;
    return file.PointerToSymbolTable == 0 ? std::nullopt : bytes.text(texts + place);
}

} // namespace

LibrarySection readLibrarySection(OsFilePath const& path, LiString const& name, std::size_t limit) {
    Bytes const bytes(path);
    auto const headers = readHeaders(bytes);
    if (!headers) return {};
    auto const found = std::find_if(headers->sections.begin(), headers->sections.end(),
        [&](IMAGE_SECTION_HEADER const& section) { return nameOf(bytes, headers->file, section) == name; });
    if (found == headers->sections.end()) return {};
    // The file holds whole blocks; the content ends in the last one.
    std::size_t const size = std::min(found->Misc.VirtualSize, found->SizeOfRawData);
    if (size > limit) return {LibrarySection::State::TooLarge, {}};
    if (!bytes.contains(found->PointerToRawData, size)) return {LibrarySection::State::Outside, {}};
    LiString content(size, '\0');
    if (!bytes.read(found->PointerToRawData, content.data(), size)) return {LibrarySection::State::Outside, {}};
    return {LibrarySection::State::Complete, std::move(content)};
}

PeFile readPeFile(OsFilePath const& path) {
    Bytes const bytes(path);
    auto const headers = readHeaders(bytes);
    if (!headers) return {};
    bool const isWhole = std::all_of(headers->sections.begin(), headers->sections.end(),
        [&](IMAGE_SECTION_HEADER const& section) { return isComplete(bytes, section); });
    if (!isWhole) return {PeFile::State::CutOff, {}};
    return {PeFile::State::Complete, readNeeded(bytes, *headers)};
}

} // namespace Ko
