#!/usr/bin/env bash
# Builds small bad houses, each with one fault, and expects the layer check to name that fault and its place.
# Usage: selfTest.sh CHECK_LAYERS
set -euo pipefail

check=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0

# A house that is in order: two libraries, and two modules of which the second uses the first.
build_house() {
    rm -rf "$scratch/house"
    mkdir -p "$scratch"/house/{platform/{base,resmgt}/src/posix,framework/{command,actions}/src}
    cd "$scratch/house"
    printf 'add_subdirectory(platform/base)\nadd_subdirectory(platform/resmgt)\nadd_subdirectory(framework)\n' >CMakeLists.txt
    printf 'add_subdirectory(command)\nadd_subdirectory(actions)\n' >framework/CMakeLists.txt
    room platform base ko_platform_library ""
    room platform resmgt ko_platform_library base
    room framework command ko_module "resmgt base"
    room framework actions ko_module "command base"
    printf '#include "base/export.h"\n' >framework/frameworkApi.h
    printf '#if defined(_WIN32)\n#endif\n' >platform/base/export.h
    sed -i 's|PUBLIC_HEADERS|PUBLIC_HEADERS export.h|' platform/base/CMakeLists.txt
    printf 'int* a = new int; delete a;\n' >platform/base/rcShdPtr.h
    sed -i 's|PUBLIC_HEADERS|PUBLIC_HEADERS rcShdPtr.h|' platform/base/CMakeLists.txt
    printf '#include "framework/frameworkApi.h"\n#include "base/base.h"\n' >framework/command/command.h
    printf '#include "framework/command/command.h"\n#include <vector>\n' >framework/actions/actions.h
    mkdir platform/base/src/windows
    printf '#ifdef _WIN32\n#include <windows.h>\n#endif\n' >platform/base/src/windows/half.cpp
    printf '#include <unistd.h>\nhalf() = delete; // a new half, to delete x\ntext = "new x, delete x";\n' >platform/base/src/posix/half.cpp
    sed -i 's|NEIGHBOURS|POSIX_SOURCES src/posix/half.cpp WINDOWS_SOURCES src/windows/half.cpp NEIGHBOURS|' \
        platform/base/CMakeLists.txt
}

# room PARENT NAME FUNCTION NEIGHBOURS: a public header, a template body, and a source with a private header.
room() {
    local folder=$1/$2 path=$2
    [[ $1 == platform ]] || path=framework/$2
    printf '%s(%s # a comment (with ko_module in it)\n  PUBLIC_HEADERS %s.h\n  TEMPLATE_BODIES %s.imp.h\n' "$3" "$2" "$2" "$2" \
        >"$folder/CMakeLists.txt"
    printf '  PRIVATE_HEADERS src/hidden.h\n  SOURCES src/%s.cpp\n  NEIGHBOURS %s\n)\n' "$2" "$4" >>"$folder/CMakeLists.txt"
    touch "$folder/$2.h" "$folder/src/hidden.h"
    printf '#include "%s"\n' "$path/$2.h" >"$folder/$2.imp.h"
    printf '#include "%s"\n' "$path/$2.imp.h" "$path/src/hidden.h" >"$folder/src/$2.cpp"
}

report() {
    printf 'FAILED  %s\n  expected: %s\n  got: %s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
}

# refused NAME MESSAGE COMMAND: after COMMAND has damaged the house, the check fails and its output contains MESSAGE.
refused() {
    local words
    build_house
    eval "$3"
    if words=$("$check" "$scratch/house" 2>&1); then
        report "$1" "$2" "the house passes"
    elif [[ $words != *"$2"* ]]; then
        report "$1" "$2" "$words"
    elif (($(wc -l <<<"$words") != 1)); then
        report "$1" "that one message and no other" "$words"
    else
        printf 'ok      %s\n' "$1"
    fi
}

build_house
words=$("$check" "$scratch/house" 2>&1) || report "the house in order" "17 files in 4 rooms keep to the layers." "$words"

append() { printf '%s\n' "$2" >>"$1"; }

refused "a room that is no neighbour" \
    'framework/actions/actions.h:3: actions may not include resmgt, which is no neighbour of it: "resmgt/resmgt.h"' \
    'append framework/actions/actions.h "#include \"resmgt/resmgt.h\""'
refused "a room of a higher layer" \
    'platform/base/src/base.cpp:3: base may not include resmgt' \
    'append platform/base/src/base.cpp "  #  include \"resmgt/resmgt.h\""'
refused "a library includes the framework's export header" \
    'platform/base/base.h:1: base may not include' \
    'append platform/base/base.h "#include \"framework/frameworkApi.h\""'
refused "the private part of a neighbour" \
    'framework/actions/src/actions.cpp:3: private to command: "framework/command/src/hidden.h"' \
    'append framework/actions/src/actions.cpp "#include \"framework/command/src/hidden.h\""'
refused "a public header that needs a private one" \
    'framework/command/command.h:3: a public header includes a private one' \
    'append framework/command/command.h "#include \"framework/command/src/hidden.h\""'
refused "a template body in a header" \
    'framework/command/command.h:3: only the source that instantiates a template includes its body: "base/base.imp.h"' \
    'append framework/command/command.h "#include \"base/base.imp.h\""'
refused "a path from the own folder" \
    'platform/base/src/base.cpp:3: not a file below the include roots: "hidden.h"' \
    'append platform/base/src/base.cpp "#include \"hidden.h\""'
refused "a path upwards" \
    'platform/base/src/base.cpp:3: not a file below the include roots: "base/../base/base.h"' \
    'append platform/base/src/base.cpp "#include \"base/../base/base.h\""'
refused "a path from the wrong root" \
    'framework/actions/actions.h:3: not a file below the include roots: "platform/base/base.h"' \
    'append framework/actions/actions.h "#include \"platform/base/base.h\""'
refused "an own header in angle brackets" \
    'framework/actions/actions.h:3: own headers are included in quotes: <base/base.h>' \
    'append framework/actions/actions.h "#include <base/base.h>"'
refused "a file that is not listed" \
    'framework/command/src/forgotten.cpp:1: is not listed in framework/command/CMakeLists.txt' \
    'touch framework/command/src/forgotten.cpp'
refused "a catalogue that is not listed" \
    'framework/command/command.msg:1: is not listed in framework/command/CMakeLists.txt' \
    'touch framework/command/command.msg'
refused "a listed catalogue that is missing" \
    'framework/command/CMakeLists.txt:6: is listed, but does not exist: framework/command/command.msg' \
    'sed -i "s/NEIGHBOURS/CATALOGUES command.msg NEIGHBOURS/" framework/command/CMakeLists.txt'
refused "a file in no room" \
    'framework/service/service.h:1: is not listed' \
    'mkdir framework/service && touch framework/service/service.h'
refused "a listed file that is missing" \
    'framework/command/CMakeLists.txt:4: is listed, but does not exist: framework/command/src/hidden.h' \
    'rm framework/command/src/hidden.h && sed -i /hidden/d framework/command/src/command.cpp'
refused "a private header listed as public" \
    "framework/command/CMakeLists.txt:4: a public header lies in the room's folder itself: src/hidden.h" \
    'sed -i s/PRIVATE_HEADERS/PUBLIC_HEADERS/ framework/command/CMakeLists.txt'
refused "a source of one system among those of all" \
    'platform/base/CMakeLists.txt:5: a source of windows lies in src/windows/: src/base.cpp' \
    'sed -i "s/ SOURCES src/ WINDOWS_SOURCES src/" platform/base/CMakeLists.txt'
refused "a system conditional in a source" \
    'framework/command/src/command.cpp:3: a system conditional outside src/posix/ and src/windows/' \
    'append framework/command/src/command.cpp "#if defined(__linux__) || FOO" && append framework/command/src/command.cpp "#endif"'
refused "a system conditional in a public header" \
    'platform/base/base.h:1: a system conditional' \
    'append platform/base/base.h "#ifndef _WIN32" && append platform/base/base.h "#endif"'
refused "a system conditional in an export header" \
    'framework/frameworkApi.h:2: a system conditional' \
    'append framework/frameworkApi.h "#ifdef _WIN32" && append framework/frameworkApi.h "#endif"'
refused "a naked new" \
    'framework/command/src/command.cpp:3: a naked new or delete' \
    'append framework/command/src/command.cpp "int* a = new int(1);"'
refused "a naked delete" \
    'framework/command/command.h:3: a naked new or delete' \
    'append framework/command/command.h "delete[] a;"'
refused "a system header in a source" \
    'framework/command/src/command.cpp:3: a system header outside src/posix/ and src/windows/: <sys/wait.h>' \
    'append framework/command/src/command.cpp "#include <sys/wait.h>"'
refused "a system header in the system half of a module" \
    'framework/command/src/posix/half.cpp:1: a system header' \
    'mkdir framework/command/src/posix && append framework/command/src/posix/half.cpp "#include <dlfcn.h>" &&
     sed -i "s| NEIGHBOURS| POSIX_SOURCES src/posix/half.cpp NEIGHBOURS|" framework/command/CMakeLists.txt'
refused "neighbours of each other" \
    'platform/base/CMakeLists.txt:6: base may not have a neighbour that comes no earlier than itself: resmgt' \
    'sed -i "s/NEIGHBOURS/NEIGHBOURS resmgt/" platform/base/CMakeLists.txt'
refused "a module as neighbour of a library" \
    'platform/resmgt/CMakeLists.txt:6: resmgt may not have a neighbour that comes no earlier than itself: command' \
    'sed -i "s/NEIGHBOURS/NEIGHBOURS command/" platform/resmgt/CMakeLists.txt'
refused "a neighbour that does not exist" \
    'framework/actions/CMakeLists.txt:6: actions has an unknown neighbour: bgtask' \
    'sed -i "s/NEIGHBOURS/NEIGHBOURS bgtask/" framework/actions/CMakeLists.txt'
refused "a room that is not added" \
    'framework/actions/CMakeLists.txt:1: framework/actions is not added' \
    'sed -i /actions/d framework/CMakeLists.txt'
refused "a room that carries another name than its folder" \
    'framework/actions/CMakeLists.txt:1: the room action is declared in framework/actions' \
    'sed -i s/ko_module\(actions/ko_module\(action/ framework/actions/CMakeLists.txt'

exit "$((failures > 0))"
