#include "resmgt/src/posix/libraryCheck.h"

#include "resmgt/liStringParser.h"
#include "resmgt/src/posix/elfFile.h"

#include <algorithm>
#include <cstddef>
#include <dlfcn.h>
#include <link.h>
#include <memory>

namespace Ko {

namespace {

using Directories = Vector<LiString>;

struct Closer {
    void operator()(void* library) const noexcept { ::dlclose(library); }
};
using Handle = std::unique_ptr<void, Closer>;

// The loader compares the name with the names of the libraries that it has.
bool isLoaded(LiString const& name) {
    return name.empty() || Handle(::dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD));
}

/// The directories that the loader searches for every library, as it lists them.
struct CommonDirectories {
    CommonDirectories() {
        Handle const program(::dlopen(nullptr, RTLD_LAZY));
        Dl_serinfo size{};
        if (!program || ::dlinfo(program.get(), RTLD_DI_SERINFOSIZE, &size) != 0) return;
        auto const memory = std::make_unique<std::max_align_t[]>(size.dls_size / sizeof(std::max_align_t) + 1);
        auto* const info = reinterpret_cast<Dl_serinfo*>(memory.get());
        *info = size;
        if (::dlinfo(program.get(), RTLD_DI_SERINFO, info) != 0) return;
        for (unsigned int index = 0; index < info->dls_cnt; ++index)
            take(info->dls_serpath[index]);
    }

    Directories environment, system;

private:
    void take(Dl_serpath const& path) {
        if (path.dls_flags == LA_SER_RUNPATH) return; // of the program itself
        (path.dls_flags == LA_SER_LIBPATH ? environment : system).emplace_back(path.dls_name);
    }
};

// The directories of a list in a library that lies in `origin`.
Directories directoriesOf(LiString const& list, OsFilePath const& origin) {
    Directories result;
    for (LiString& directory : LiStringParser::splitList(list, ":")) {
        for (LiString const token : {"$ORIGIN", "${ORIGIN}"})
            if (auto const at = directory.find(token); at != LiString::npos)
                directory.replace(at, token.size(), origin.getPath());
        result.push_back(std::move(directory));
    }
    return result;
}

void append(Directories& directories, Directories const& others) {
    directories.insert(directories.end(), others.begin(), others.end());
}

/// A library and the directories for the libraries that it needs.
struct Library {
    OsFilePath path;
    ElfFile file;
    // The directories of its own RPATH and of those of the libraries that need it. A RUNPATH replaces the own one.
    Directories rpath;
};

class LibraryCheck {
public:
    // @returns the words about the first broken library.
    std::optional<LiString> run(OsFilePath const& path) {
        if (!take(path, {})) return std::nullopt;
        for (std::size_t index = 0; !_problem && index < _libraries.size(); ++index)
            takeNeeded(index);
        return _problem;
    }

private:
    // @returns whether the file is a library.
    bool take(OsFilePath const& path, Directories const& inherited) {
        if (std::any_of(_libraries.begin(), _libraries.end(), [&](Library const& known) { return known.path == path; }))
            return true;
        ElfFile file = readElfFile(path);
        if (file.state == ElfFile::State::Foreign) return false;
        LiString const needed = _libraries.empty() ? "" : "needs " + path.getPath() + ": ";
        if (file.state == ElfFile::State::CutOff) _problem = needed + "file is cut off";
        if (file.state == ElfFile::State::Damaged) _problem = needed + "file is damaged";
        Directories rpath;
        if (file.runpath.empty()) rpath = directoriesOf(file.rpath, path.getDirectory());
        append(rpath, inherited);
        _libraries.push_back({path, std::move(file), std::move(rpath)});
        return true;
    }

    void takeNeeded(std::size_t index) {
        // By a copy: the list grows.
        Library const library = _libraries[index];
        for (LiString const& name : library.file.needed) {
            if (_problem || isLoaded(name)) continue;
            if (name.find('/') != LiString::npos)
                take(name, library.rpath);
            else
                search(name, library);
        }
    }

    void search(LiString const& name, Library const& library) {
        if (!_common) _common.emplace();
        Directories directories;
        if (library.file.runpath.empty()) directories = library.rpath;
        append(directories, _common->environment);
        append(directories, directoriesOf(library.file.runpath, library.path.getDirectory()));
        append(directories, _common->system);
        for (LiString const& directory : directories)
            if (take(OsFilePath(directory) + name, library.rpath)) return;
    }

    std::optional<CommonDirectories> _common;
    Vector<Library> _libraries;
    std::optional<LiString> _problem;
};

} // namespace

std::optional<LiString> findBrokenLibrary(OsFilePath const& path) {
    return LibraryCheck().run(path);
}

} // namespace Ko
