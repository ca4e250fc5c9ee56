#include "resmgt/osSharedLib.h"
#include "tests/support/childProcess.h"
#include "tests/support/declaredLibrary.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <link.h>
#include <span>

namespace {

using namespace Ko;
using namespace KoTest;

std::filesystem::path const libraries = KO_TEST_PLUG_INS;

auto answerOf(OsSharedLib const& library) {
    return reinterpret_cast<int (*)()>(library.getSymbol("koAnswer"));
}

std::string reasonOf(OsFilePath const& path) {
    return messageOf([&] { OsSharedLib::open(path); });
}

TEST(OsSharedLib, StaysOpenWithoutAHandle) {
    OsFilePath const path = (libraries / "answer" KO_SUFFIX).string();
    auto const answer = answerOf(OsSharedLib::open(path));
    EXPECT_EQ(42, answer());
    OsSharedLib const again = OsSharedLib::open(path);
    EXPECT_EQ(path, again.getPath());
    EXPECT_EQ(answer, answerOf(again)) << "not opened again";
    for (std::string const& name : {std::string("koQuestion"), std::string("koAnswer\0", 9)})
        EXPECT_THROW(static_cast<void>(again.getSymbol(name)), OsSharedLibEx);
}

TEST(OsSharedLib, OpensABareNameInTheCurrentDirectoryAndNowhereElse) {
    inChildProcess([] {
        TemporaryFolder const folder;
        std::filesystem::copy_file(libraries / "answer" KO_SUFFIX, folder / "bare" KO_SUFFIX);
        std::filesystem::current_path(folder / "");
        EXPECT_EQ(42, answerOf(OsSharedLib::open("bare" KO_SUFFIX))());
        EXPECT_THROW(OsSharedLib::open("libc" KO_SUFFIX ".6"), OsSharedLibEx);
    });
}

TEST(OsSharedLib, PassesOnWhatTheSystemSaysWithThePath) {
    TemporaryFolder const folder;
    folder.write("text" KO_SUFFIX, std::string(1000, 'x'));
    folder.write("short" KO_SUFFIX, "x");
    folder.write("folder" KO_SUFFIX "/file", "");
    std::string const foreign("\x7F"
                              "ELF\x01\x01\x01",
        7); // of a 32-bit machine
    folder.write("foreign" KO_SUFFIX, foreign + std::string(2000, '\0'));
    std::filesystem::copy_file(libraries / "unresolved.op" KO_SUFFIX, folder / "unresolved" KO_SUFFIX);
    std::filesystem::copy_file(libraries / "orphan.op" KO_SUFFIX, folder / "orphan" KO_SUFFIX);
    for (auto const& [name, words] :
        std::vector<std::pair<std::string, char const*>>{{"text" KO_SUFFIX, "invalid ELF header"},
            {"short" KO_SUFFIX, "file too short"}, {"folder" KO_SUFFIX, "directory"},
            {"foreign" KO_SUFFIX, "wrong ELF class"}, {"missing" KO_SUFFIX, "No such file"},
            {"unresolved" KO_SUFFIX, "koNobodyHasThis"}, {std::string("unresolved" KO_SUFFIX "\0", 14), "zero byte"},
            {"orphan" KO_SUFFIX, "libplugInAbsent" KO_SUFFIX ": cannot open"}}) {
        std::string const path = (folder / name).string();
        std::string const reason = reasonOf(path);
        EXPECT_TRUE(reason.starts_with(path.c_str() + std::string(": "))) << reason;
        EXPECT_NE(std::string::npos, reason.find(words)) << reason;
    }
}

// A library that is cut off anywhere must not end the process.
TEST(OsSharedLib, RefusesALibraryThatIsCutOff) {
    TemporaryFolder const folder;
    auto const whole = std::filesystem::file_size(libraries / "answer" KO_SUFFIX);
    for (std::uintmax_t const size :
        std::initializer_list<std::uintmax_t>{whole - 1, whole / 2, 4096, 500, 64, 63, 4}) {
        auto const path = folder / (std::to_string(size) + KO_SUFFIX);
        std::filesystem::copy_file(libraries / "answer" KO_SUFFIX, path);
        std::filesystem::resize_file(path, size);
        EXPECT_TRUE(reasonOf(path.string()).starts_with(path.string() + ": ")) << size;
    }
}

// The same for a library that the opened library needs, directly or through another one.
TEST(OsSharedLib, NamesALibraryThatIsCutOffAmongThoseThatItNeeds) {
    auto const copy = [](TemporaryFolder const& folder, std::string const& name) {
        for (char const* const from : {"", "absent"})
            if (auto const original = libraries / from / name; std::filesystem::exists(original))
                std::filesystem::copy_file(original, folder / name);
        return folder / name;
    };
    for (std::string const opened : {"orphan.op" KO_SUFFIX, "grandOrphan.op" KO_SUFFIX})
        for (double const part : {0.5, 0.99, 1.0})
            inChildProcess([&] {
                TemporaryFolder const folder;
                std::string const path = copy(folder, opened);
                copy(folder, "libplugInOrphan" KO_SUFFIX);
                auto const needed = copy(folder, "libplugInAbsent" KO_SUFFIX);
                auto const whole = static_cast<double>(std::filesystem::file_size(needed));
                std::filesystem::resize_file(needed, static_cast<std::uintmax_t>(part * whole));
                if (part < 1.0)
                    EXPECT_EQ(path + ": needs " + needed.string() + ": file is cut off", reasonOf(path));
                else
                    EXPECT_NO_THROW(OsSharedLib::open(path));
            });
}

// The headers of a library.
struct Parts {
    explicit Parts(std::string& file) : header(at<ElfW(Ehdr)>(file, 0)) {
        segments = {at<ElfW(Phdr)>(file, header->e_phoff), header->e_phnum};
        ElfW(Off) end = 0;
        for (ElfW(Phdr) & segment : segments) {
            if (segment.p_type == PT_DYNAMIC) dynamic = &segment;
            if (segment.p_type == PT_LOAD) end = segment.p_offset + segment.p_filesz;
        }
        entries = {at<ElfW(Dyn)>(file, dynamic->p_offset), (end - dynamic->p_offset) / sizeof(ElfW(Dyn))};
    }
    ElfW(Dyn) & entry(ElfW(Sxword) tag) const {
        return *std::find_if(entries.begin(), entries.end(), [tag](auto const& found) { return found.d_tag == tag; });
    }
    template <class T>
    static T* at(std::string& file, std::size_t offset) {
        return reinterpret_cast<T*>(file.data() + offset);
    }

    ElfW(Ehdr) * header;
    std::span<ElfW(Phdr)> segments;
    ElfW(Phdr) * dynamic = nullptr;
    std::span<ElfW(Dyn)> entries; // and the rest of their segment
};

TEST(OsSharedLib, RefusesALibraryWhoseHeadersLieOutsideOfIt) {
    constexpr auto far = std::numeric_limits<std::uint64_t>::max() - 8;
    struct Row {
        char const* words;
        void (*damage)(Parts& parts);
    };
    for (Row const& row : {Row{"cut off", [](Parts& parts) { parts.header->e_phoff = far; }},
             Row{"cut off", [](Parts& parts) { parts.header->e_shoff = far; }},
             Row{"cut off", [](Parts& parts) { parts.segments[0].p_filesz = far; }},
             Row{"damaged", [](Parts& parts) { parts.header->e_phnum = 0xFFFF; }},
             Row{"damaged", [](Parts& parts) { parts.dynamic->p_vaddr = far; }},
             Row{"damaged", [](Parts& parts) { std::ranges::fill(parts.entries, parts.entries[0]); }},
             Row{"damaged", [](Parts& parts) { parts.entry(DT_STRTAB).d_un.d_ptr = far; }},
             Row{"damaged", [](Parts& parts) { parts.entry(DT_SYMTAB).d_un.d_ptr = far; }},
             Row{"damaged", [](Parts& parts) { parts.entry(DT_NEEDED).d_un.d_val = far / 2; }}})
        inChildProcess([&] {
            std::ifstream original(libraries / "orphan.op" KO_SUFFIX, std::ios::binary);
            std::string file(std::istreambuf_iterator<char>(original), {});
            Parts parts(file);
            row.damage(parts);
            TemporaryFolder const folder;
            std::string const path = folder.write("hostile" KO_SUFFIX, file);
            EXPECT_EQ(path + ": file is " + row.words, reasonOf(path));
        });
}

// The content of the section ".text" of at most 7 bytes, or why there is none.
std::string readText(std::string const& library) {
    TemporaryFolder const folder;
    std::string const path = folder.write("x" KO_SUFFIX, library);
    std::string outcome = messageOf([&] {
        auto const content = OsSharedLib::readSection(path, ".text", 7);
        throw std::runtime_error(content ? *content : "no section");
    });
    std::string const before = path + ": the section .text ";
    if (outcome.starts_with(before)) outcome.erase(0, before.size());
    return outcome;
}

TEST(OsSharedLib, ReadsASectionOnlyWhereItLiesInTheFile) {
    constexpr auto far = std::numeric_limits<std::uint64_t>::max() - 8;
    using Header = ElfW(Ehdr);
    using Sections = ElfW(Shdr)*; // the names, then the section
    struct Row {
        char const* outcome;
        void (*damage)(Header& header, Sections sections);
    };
    char const* const none = "no section";
    for (Row const &row :
        {Row{"content", [](Header&, Sections) {}}, Row{none, [](Header&header, Sections) { header.e_shnum = 0; }},
            Row{none, [](Header&header, Sections) { header.e_shnum = 0xFFFF; }},
            Row{none, [](Header&header, Sections) { header.e_shoff = far; }},
            Row{none, [](Header&header, Sections) { header.e_shentsize = 1; }},
            Row{none, [](Header&header, Sections) { header.e_shstrndx = 2; }},
            Row{none, [](Header&header, Sections) { header.e_shstrndx = 0xFFFF; }},
            Row{none, [](Header&header, Sections) { header.e_ident[EI_CLASS] = 0; }},
            Row{none, [](Header&, Sections sections) { sections[0].sh_offset = far; }},
            Row{none, [](Header&, Sections sections) { sections[0].sh_size = far; }},
            Row{none, [](Header&, Sections sections) { sections[0].sh_size = 5; }},
            Row{none, [](Header&, Sections sections) { sections[1].sh_name = 0xFFFFFFFF; }},
            Row{"lies outside of the file", [](Header&, Sections sections) { sections[1].sh_offset = far; }},
            Row{"lies outside of the file", [](Header&, Sections sections) { sections[1].sh_type = SHT_NOBITS; }},
            Row{"lies outside of the file", [](Header&, Sections sections) { sections[1].sh_offset -= 1000; }},
            Row{"is larger than 7 bytes", [](Header&, Sections sections) { sections[1].sh_size = 8; }},
            Row{"is larger than 7 bytes", [](Header&, Sections sections) { sections[1].sh_size = far; }}}) {
        std::string file = withSection(emptyLibrary(), "content", ".text");
        auto& header = *reinterpret_cast<Header*>(file.data());
        row.damage(header, reinterpret_cast<Sections>(file.data() + header.e_shoff));
        EXPECT_EQ(row.outcome, readText(file));
    }
    TemporaryFolder const folder;
    EXPECT_FALSE(OsSharedLib::readSection((folder / "missing" KO_SUFFIX).string(), ".text", 7));
    EXPECT_FALSE(OsSharedLib::readSection((folder / "").string(), ".text", 7));
    EXPECT_TRUE(OsSharedLib::readSection((libraries / "answer" KO_SUFFIX).string(), ".dynamic", 10000));
}

} // namespace
