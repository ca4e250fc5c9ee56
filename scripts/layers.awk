# The rules of check-layers. Reads, in this order (named by the variable `phase`): the CMakeLists.txt files that add
# the rooms, those of the rooms, the names of all sources, and the sources. Every fault is a line "file:line: message".

BEGIN {
    split("LINK PUBLIC_HEADERS TEMPLATE_BODIES PRIVATE_HEADERS SOURCES POSIX_SOURCES WINDOWS_SOURCES CATALOGUES NEIGHBOURS", words)
    for (i in words) isRole[words[i]] = 1
    systemMacro = "(^|[^A-Za-z0-9_])(_WIN32|_WIN64|__MINGW32__|_MSC_VER|__linux__|__linux|__gnu_linux__|__APPLE__|" \
        "__unix__|__unix|__FreeBSD__|_POSIX_VERSION)([^A-Za-z0-9_]|$)"
    # Smart pointers, singletons and deleters own memory on behalf of all other code.
    memoryOwner = "^(platform/base/(src/rcBase\\.cpp|rcShdPtr\\.h|inSingleton\\.imp\\.h)|platform/resmgt/lkSingleton\\.imp\\.h|" \
        "framework/actions/src/actAction\\.cpp)$"
    nakedMemory = "(^|[^A-Za-z0-9_])(new +[A-Za-z_:]|delete(\\[\\])? +[A-Za-z_:*(])"
    systemHeader = "^(unistd|dlfcn|[Ww]indows|pthread|fcntl|spawn|signal|poll|dirent|fnmatch|glob|link|termios|" \
        "wordexp)\\.h$|^(sys|linux|mach|mach-o)/"
}

function refuse(where, message) {
    print where ": " message
    ++faults
}

function here() { return FILENAME ":" FNR }

function folderOf(path) {
    sub(/\/[^\/]*$/, "", path)
    return path
}

function startsWith(text, start) { return index(text, start) == 1 }

# The room, by folder, that a file lies in: "platform/base/src/posix/x.cpp" lies in "platform/base".
function roomOf(path, parts) {
    split(path, parts, "/")
    return parts[1] "/" parts[2]
}

# ---- phase order: the order of the rooms

phase == "order" && match($0, /^[ \t]*add_subdirectory\([^) \t]+/) {
    folder = substr($0, RSTART, RLENGTH)
    sub(/.*\(/, "", folder)
    if (startsWith(FILENAME, "framework/")) folder = "framework/" folder
    # The adapters lie above all modules of the framework, whose order is read later.
    layer[folder] = ++layers + (startsWith(folder, "adapters/") ? 1000 : 0)
}

# ---- phase rooms: the files and the neighbours of each room

phase == "rooms" {
    sub(/#.*/, "")
    gsub(/[()]/, " & ")
    count = split($0, words)
    for (i = 1; i <= count; ++i) readWord(words[i])
}

function readWord(word) {
    if (word == "ko_platform_library" || word == "ko_module" || word == "ko_adapter") call = word
    else if (call == "" || word == "(") return
    else if (word == ")") call = role = room = ""
    else if (room == "") openRoom(word)
    else if (word in isRole) role = word
    else if (role == "LINK") return
    else if (role == "NEIGHBOURS") addNeighbour(word)
    else addFile(word)
}

function openRoom(name) {
    room = folderOf(FILENAME)
    nameOf[room] = name
    roomNamed[name] = room
    if (room != (call == "ko_module" ? "framework/" : call == "ko_adapter" ? "adapters/" : "platform/") name)
        refuse(here(), "the room " name " is declared in " room)
    if (!(room in layer)) refuse(here(), room " is not added by the CMakeLists.txt above it")
}

function addNeighbour(name) {
    mayUse[room, name] = 1
    edgeFrom[++edges] = room
    edgeTo[edges] = name
    edgeAt[edges] = here()
}

function addFile(name, path) {
    path = room "/" name
    roleOf[path] = role
    listedAt[path] = here()
    if (role == "PUBLIC_HEADERS" && name ~ /\//) refuse(here(), "a public header lies in the room's folder itself: " name)
    if (role == "PRIVATE_HEADERS" && !startsWith(name, "src/")) refuse(here(), "a private header lies in src/: " name)
    if (role == "POSIX_SOURCES" && !startsWith(name, "src/posix/")) refuse(here(), "a source of posix lies in src/posix/: " name)
    if (role == "WINDOWS_SOURCES" && !startsWith(name, "src/windows/")) refuse(here(), "a source of windows lies in src/windows/: " name)
}

# ---- phase files: every file is listed

phase == "files" {
    exists[$0] = 1
    if (!($0 in listedAt) && folderOf($0) != "framework")
        refuse($0 ":1", "is not listed in " roomOf($0) "/CMakeLists.txt")
}

# ---- phase sources: includes, conditionals, memory

phase == "sources" && FNR == 1 {
    own = roomOf(FILENAME)
    isPrivate = FILENAME ~ /\/src\//
    isSystemHalf = FILENAME ~ /^platform\/[^\/]+\/src\/(posix|windows)\//
    isExportHeader = FILENAME == "platform/base/export.h"
    isMemoryOwner = FILENAME ~ memoryOwner
}

phase == "sources" && /^[ \t]*#[ \t]*include[ \t]*["<]/ {
    quoted = $0 ~ /include[ \t]*"/
    path = $0
    sub(/^[^"<]*["<]/, "", path)
    sub(/[">].*/, "", path)
    if (quoted) checkInclude(path)
    else checkSystemInclude(path)
}

phase == "sources" && /^[ \t]*#[ \t]*(if|ifdef|ifndef|elif)[^A-Za-z0-9_]/ && $0 ~ systemMacro {
    if (!isSystemHalf && !isExportHeader) refuse(here(), "a system conditional outside src/posix/ and src/windows/")
}

phase == "sources" && !isMemoryOwner && /new|delete/ {
    code = $0
    gsub(/"([^"\\]|\\.)*"|\/\/.*/, "", code)
    if (code ~ nakedMemory) refuse(here(), "a naked new or delete")
}

function checkSystemInclude(path) {
    if (resolve(path) in exists) refuse(here(), "own headers are included in quotes: <" path ">")
    if (path ~ systemHeader && !isSystemHalf) refuse(here(), "a system header outside src/posix/ and src/windows/: <" path ">")
}

function resolve(path) { return path ~ /^(framework|adapters)\// ? path : "platform/" path }

function checkInclude(path, file, target) {
    file = resolve(path)
    if (path ~ /(^|\/)\.\.?\// || !(file in exists)) {
        refuse(here(), "not a file below the include roots: \"" path "\"")
        return
    }
    if (folderOf(file) == "framework" && own ~ /^(framework|adapters)\//) return
    # The export header of the framework belongs to no room.
    if (file == "platform/base/export.h" && folderOf(FILENAME) == "framework") return
    target = roomOf(file)
    if (target != own && !((own, nameOf[target]) in mayUse))
        refuse(here(), nameOf[own] " may not include " nameOf[target] ", which is no neighbour of it: \"" path "\"")
    else if (target != own && file ~ /\/src\//) refuse(here(), "private to " nameOf[target] ": \"" path "\"")
    else if (file ~ /\/src\// && !isPrivate) refuse(here(), "a public header includes a private one: \"" path "\"")
    else if (file ~ /\.imp\.h$/ && FILENAME !~ /(\.cpp|\.imp\.h)$/)
        refuse(here(), "only the source that instantiates a template includes its body: \"" path "\"")
}

# ---- when everything is read

END {
    for (i = 1; i <= edges; ++i) checkEdge(edgeFrom[i], edgeTo[i], edgeAt[i])
    for (path in listedAt)
        if (!(path in exists)) refuse(listedAt[path], "is listed, but does not exist: " path)
    exit faults > 0
}

function checkEdge(from, name, at) {
    if (!(name in roomNamed)) refuse(at, nameOf[from] " has an unknown neighbour: " name)
    else if (from in layer && layer[roomNamed[name]] >= layer[from])
        refuse(at, nameOf[from] " may not have a neighbour that comes no earlier than itself: " name)
}
