#pragma once

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <link.h>
#include <string>
#include <vector>

namespace KoTest {

/// The content of the section with a plug-in's declaration.
inline std::string declarationOf(std::string const& lines) {
    std::string section = "KOPLUGIN";
    for (unsigned shift = 0; shift < 32; shift += 8)
        section += static_cast<char>(lines.size() >> shift & 0xFF);
    return section + lines;
}

/// A file that has the header of a library, and no content.
inline std::string emptyLibrary() {
    ElfW(Ehdr) header{};
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_ident[EI_CLASS] = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    header.e_phentsize = sizeof(ElfW(Phdr));
    header.e_shentsize = sizeof(ElfW(Shdr));
    return {reinterpret_cast<char const*>(&header), sizeof header};
}

inline std::string contentOf(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A library with a further section, which the system's loader does not notice.
inline std::string withSection(std::string file, std::string const& content, std::string const& name = ".koplugin") {
    using Section = ElfW(Shdr);
    ElfW(Ehdr) header{};
    std::memcpy(&header, file.data(), sizeof header);
    std::vector<Section> table(std::max<std::size_t>(1, header.e_shnum));
    std::memcpy(table.data(), file.data() + header.e_shoff, header.e_shnum * sizeof(Section));
    Section& namesSection = table[header.e_shstrndx];
    std::string names(
        header.e_shnum ? file.substr(namesSection.sh_offset, namesSection.sh_size) : std::string(1, '\0'));

    Section added{};
    added.sh_type = SHT_PROGBITS;
    added.sh_name = static_cast<ElfW(Word)>(names.size());
    added.sh_offset = file.size();
    added.sh_size = content.size();
    file += content;
    names += name + '\0';
    namesSection.sh_type = SHT_STRTAB;
    namesSection.sh_offset = file.size();
    namesSection.sh_size = names.size();
    table.push_back(added);
    file += names;
    file.resize((file.size() + 15) / 16 * 16);
    header.e_shoff = file.size();
    header.e_shnum = static_cast<ElfW(Half)>(table.size());
    std::memcpy(file.data(), &header, sizeof header);
    return file.append(reinterpret_cast<char const*>(table.data()), table.size() * sizeof(Section));
}

} // namespace KoTest
