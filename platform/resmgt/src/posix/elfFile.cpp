#include "resmgt/src/posix/elfFile.h"

#include "resmgt/src/posix/descriptor.h"
#include "resmgt/src/programs/librarySection.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <link.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace Ko {

namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Dynamic = ElfW(Dyn);
using Section = ElfW(Shdr);

// More than any linker writes. A file with more is damaged: reading it could take for ever, and the loader keeps its segments
// on the stack.
constexpr std::size_t maxSegments = 1 << 12;
constexpr std::size_t maxDynamicEntries = 1 << 16;
constexpr std::size_t maxTextLength = 1 << 16;

/// A file of a known size.
class Bytes {
public:
    explicit Bytes(OsFilePath const& path) : _file(::open(path.getPath().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        struct stat status {};
        if (::fstat(_file.get(), &status) == 0) _size = static_cast<std::uint64_t>(status.st_size);
    }

    // Written so that no offset of a damaged header overflows.
    bool contains(std::uint64_t offset, std::uint64_t length) const noexcept {
        return length <= _size && offset <= _size - length;
    }
    bool read(std::uint64_t offset, void* target, std::size_t length) const noexcept {
        return contains(offset, length) &&
               ::pread(_file.get(), target, length, static_cast<off_t>(offset)) == static_cast<ssize_t>(length);
    }

private:
    Descriptor _file;
    std::uint64_t _size = 0;
};

bool isOfThisSystem(Header const& header) noexcept {
    constexpr unsigned char ownClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == ownClass &&
           header.e_phentsize == sizeof(Segment);
}

bool isCutOff(Bytes const& bytes, Header const& header, Vector<Segment> const& segments) {
    bool const endsInSections =
        header.e_shnum != 0 && !bytes.contains(header.e_shoff, std::uint64_t{header.e_shnum} * header.e_shentsize);
    return endsInSections || std::any_of(segments.begin(), segments.end(), [&](Segment const& segment) {
        return segment.p_type == PT_LOAD && !bytes.contains(segment.p_offset, segment.p_filesz);
    });
}

/// The parts of a library that are mapped from its file, by the addresses that they get.
class Image {
public:
    Image(Bytes const& bytes, Vector<Segment> const& segments) : _bytes(bytes), _segments(segments) {}

    // How many bytes of the file are mapped from an address on; 0 where none is.
    std::uint64_t sizeFrom(std::uint64_t address) const noexcept {
        Segment const* const segment = segmentOf(address);
        return segment ? segment->p_filesz - (address - segment->p_vaddr) : 0;
    }
    bool read(std::uint64_t address, void* target, std::size_t length) const noexcept {
        return length <= sizeFrom(address) && _bytes.read(offsetOf(address), target, length);
    }
    // A text that ends with a zero byte.
    std::optional<LiString> readText(std::uint64_t address) const {
        LiString text;
        for (std::array<char, 256> piece; text.size() < maxTextLength; text.append(piece.data(), piece.size())) {
            std::uint64_t const from = address + text.size();
            auto const length = static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), sizeFrom(from)));
            if (length == 0 || !_bytes.read(offsetOf(from), piece.data(), length)) return std::nullopt;
            auto const end = std::find(piece.begin(), piece.begin() + length, '\0');
            if (end != piece.begin() + length) return text.append(piece.begin(), end);
            if (length < piece.size()) return std::nullopt;
        }
        return std::nullopt;
    }

private:
    Segment const* segmentOf(std::uint64_t address) const noexcept {
        auto const found = std::find_if(_segments.begin(), _segments.end(), [address](Segment const& segment) {
            return segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
                   address - segment.p_vaddr < segment.p_filesz;
        });
        return found == _segments.end() ? nullptr : &*found;
    }
    std::uint64_t offsetOf(std::uint64_t address) const noexcept {
        Segment const& segment = *segmentOf(address);
        return segment.p_offset + (address - segment.p_vaddr);
    }

    Bytes const& _bytes;
    Vector<Segment> const& _segments;
};

// The entries of the dynamic section up to the one that ends it; nothing where that is missing.
std::optional<Vector<Dynamic>> readDynamic(Image const& image, Segment const& section) {
    Vector<Dynamic> entries;
    std::array<Dynamic, 32> piece;
    for (std::uint64_t address = section.p_vaddr; entries.size() < maxDynamicEntries; address += sizeof piece) {
        std::size_t const count = std::min<std::uint64_t>(piece.size(), image.sizeFrom(address) / sizeof(Dynamic));
        if (count == 0 || !image.read(address, piece.data(), count * sizeof(Dynamic))) return std::nullopt;
        auto const last = std::find_if(
            piece.begin(), piece.begin() + count, [](Dynamic const& entry) { return entry.d_tag == DT_NULL; });
        entries.insert(entries.end(), piece.begin(), last);
        if (last != piece.begin() + count) return entries;
    }
    return std::nullopt;
}

// Whether the tables that the loader reads lie within the library.
bool hasTables(Image const& image, Vector<Dynamic> const& entries) {
    constexpr std::array tables{DT_STRTAB, DT_SYMTAB, DT_HASH, DT_GNU_HASH, DT_RELA, DT_JMPREL, DT_VERSYM, DT_VERNEED};
    return std::all_of(entries.begin(), entries.end(), [&](Dynamic const& entry) {
        bool const isTable = std::find(tables.begin(), tables.end(), entry.d_tag) != tables.end();
        return !isTable || image.sizeFrom(entry.d_un.d_ptr) != 0;
    });
}

// @returns false where a text lies outside of the library.
bool readTexts(Image const& image, Vector<Dynamic> const& entries, ElfFile& file) {
    auto const texts =
        std::find_if(entries.begin(), entries.end(), [](Dynamic const& entry) { return entry.d_tag == DT_STRTAB; });
    for (Dynamic const& entry : entries) {
        if (entry.d_tag != DT_NEEDED && entry.d_tag != DT_RPATH && entry.d_tag != DT_RUNPATH) continue;
        if (texts == entries.end()) return false;
        auto text = image.readText(texts->d_un.d_ptr + entry.d_un.d_val);
        if (!text) return false;
        if (entry.d_tag == DT_NEEDED)
            file.needed.push_back(*std::move(text));
        else
            (entry.d_tag == DT_RPATH ? file.rpath : file.runpath) = *std::move(text);
    }
    return true;
}

bool readDynamicSection(Bytes const& bytes, Vector<Segment> const& segments, ElfFile& file) {
    auto const section = std::find_if(
        segments.begin(), segments.end(), [](Segment const& segment) { return segment.p_type == PT_DYNAMIC; });
    if (section == segments.end()) return true; // the loader refuses it with a message
    Image const image(bytes, segments);
    auto const entries = readDynamic(image, *section);
    return entries && hasTables(image, *entries) && readTexts(image, *entries, file);
}

ElfFile::State readHeaders(Bytes const& bytes, ElfFile& file) {
    Header header{};
    if (!bytes.read(0, &header, sizeof header) || !isOfThisSystem(header)) return ElfFile::State::Foreign;
    if (header.e_phnum > maxSegments) return ElfFile::State::Damaged;
    Vector<Segment> segments(header.e_phnum);
    if (!bytes.read(header.e_phoff, segments.data(), segments.size() * sizeof(Segment)) ||
        isCutOff(bytes, header, segments))
        return ElfFile::State::CutOff;
    return readDynamicSection(bytes, segments, file) ? ElfFile::State::Complete : ElfFile::State::Damaged;
}

std::optional<LiString> readBytes(Bytes const& bytes, Section const& section) {
    if (section.sh_type == SHT_NOBITS || !bytes.contains(section.sh_offset, section.sh_size)) return std::nullopt;
    LiString content(static_cast<std::size_t>(section.sh_size), '\0');
    if (!bytes.read(section.sh_offset, content.data(), content.size())) return std::nullopt;
    return content;
}

struct Sections {
    Vector<Section> table;
    LiString names; // each ends with a zero byte
};

// Nothing where the file does not hold all of them. Above 65279 sections, the header does not say how many there are: such files
// count as having none.
std::optional<Sections> readSections(Bytes const& bytes) {
    Header header{};
    if (!bytes.read(0, &header, sizeof header) || !isOfThisSystem(header)) return std::nullopt;
    std::size_t const size = header.e_shnum * sizeof(Section);
    bool const hasNames = header.e_shentsize == sizeof(Section) && header.e_shstrndx < header.e_shnum;
    if (!hasNames || !bytes.contains(header.e_shoff, size)) return std::nullopt;
    Vector<Section> table(header.e_shnum);
    if (!bytes.read(header.e_shoff, table.data(), size)) return std::nullopt;
    auto names = readBytes(bytes, table[header.e_shstrndx]);
    if (!names) return std::nullopt;
    return Sections{std::move(table), *std::move(names)};
}

} // namespace

LibrarySection readLibrarySection(OsFilePath const& path, LiString const& name, std::size_t limit) {
    Bytes const bytes(path);
    auto const sections = readSections(bytes);
    if (!sections) return {};
    std::string_view const names = sections->names, wanted(name.c_str(), name.size() + 1);
    auto const found = std::find_if(sections->table.begin(), sections->table.end(), [&](Section const& section) {
        return section.sh_name < names.size() && names.substr(section.sh_name).starts_with(wanted);
    });
    if (found == sections->table.end()) return {};
    if (found->sh_size > limit) return {LibrarySection::State::TooLarge, {}};
    auto content = readBytes(bytes, *found);
    if (!content) return {LibrarySection::State::Outside, {}};
    return {LibrarySection::State::Complete, *std::move(content)};
}

ElfFile readElfFile(OsFilePath const& path) {
    ElfFile file;
    file.state = readHeaders(Bytes(path), file);
    return file;
}

} // namespace Ko
