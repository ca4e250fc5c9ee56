# shellcheck shell=bash
# Functions shared by the scripts; sourced, not run. Changes to the root folder of the project.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '%s\n' "$@"; }

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

compiler() { printf '%s' "${CXX:-g++}"; }

has_program() { command -v "$1" >/dev/null; }

# Asks the compiler, so that libraries installed without a package manager are found too.
has_header() {
    printf '#if !__has_include(<%s>)\n#error\n#endif\n' "$1" | "$(compiler)" -E -x c++ - >/dev/null 2>&1
}

has_cmake() {
    has_program cmake && printf '%s\n' 3.25 "$(cmake --version | awk 'NR == 1 { print $3 }')" | sort --version-sort --check=quiet
}

# present PACKAGE: whether the contents of the Debian package are available, whatever installed them.
present() {
    case $1 in
    g++) has_program "$(compiler)" ;;
    cmake) has_cmake ;;
    ninja-build) has_program ninja ;;
    dpkg-dev) has_program dpkg-shlibdeps ;;
    xvfb) has_program Xvfb ;;
    imagemagick) has_program import && has_program convert ;;
    libgtest-dev) has_header gtest/gtest.h ;;
    libgmock-dev) has_header gmock/gmock.h ;;
    libpng-dev) has_header png.h ;;
    qt6-base-dev) compgen -G "/usr/lib*/*/cmake/Qt6Widgets/Qt6WidgetsConfig.cmake" >/dev/null || compgen -G "/usr/lib*/cmake/Qt6Widgets/Qt6WidgetsConfig.cmake" >/dev/null ;;
    clang-14) has_program clang++-14 ;;
    clang-19) has_program clang++-19 ;;
    libc++-19-dev) [[ -e /usr/lib/llvm-19/include/c++/v1/version ]] ;;
    libc++abi-19-dev) [[ -e /usr/lib/llvm-19/lib/libc++abi.a ]] ;;
    graphviz) has_program dot ;;
    doxygen-awesome-css) [[ -e /usr/share/doxygen-awesome-css/doxygen-awesome.css ]] ;;
    libclang-rt-14-dev) [[ -e $(clang++-14 -print-file-name="libclang_rt.fuzzer-$(uname -m).a" 2>/dev/null) ]] ;;
    libbenchmark-dev) has_header benchmark/benchmark.h ;;
    g++-mingw-w64-x86-64-posix) has_program x86_64-w64-mingw32-g++-posix ;;
    wine64) [[ -x /usr/lib/wine/wine64 ]] ;;
    googletest) [[ -e /usr/src/googletest/CMakeLists.txt ]] ;;
    *) has_program "$1" ;;
    esac
}

# need PACKAGE...: installs missing packages; where that is impossible, fails with a list of them.
need() {
    local missing=() package
    for package in "$@"; do
        present "$package" || missing+=("$package")
    done
    ((${#missing[@]})) || return 0
    install_packages "${missing[@]}"
    for package in "${missing[@]}"; do
        present "$package" || fail "$package is installed, but cannot be used here (cmake has to be 3.25 or newer)."
    done
}

install_packages() {
    local advice="Please install (named as in Debian): $*. Then run this again."
    local as_root=(env DEBIAN_FRONTEND=noninteractive)
    has_program apt-get || fail "There is no apt-get here. $advice"
    if ((EUID)); then
        has_program sudo || fail "Packages are missing, and there is no sudo here. $advice"
        as_root=(sudo "${as_root[@]}")
    fi
    say "Installing $*"
    "${as_root[@]}" apt-get update -qq || fail "apt-get update failed. $advice"
    "${as_root[@]}" apt-get install -qq -y --no-install-recommends "$@" || fail "apt-get install failed. $advice"
}

# The packages that every preset needs; make is for g++, which runs link-time optimisation in parallel with it.
need_build_tools() { need g++ cmake ninja-build make libgtest-dev libgmock-dev libpng-dev "$@"; }

configured() { [[ -f build/$1/build.ninja && build/$1/build.ninja -nt CMakePresets.json ]]; }

# build PRESET [TARGET...]: configures only an unconfigured build folder; the build detects changed CMake files itself.
build() {
    local preset=$1
    shift
    configured "$preset" || cmake --preset "$preset"
    cmake --build --preset "$preset" --parallel "$(getconf _NPROCESSORS_ONLN)" ${1:+--target "$@"}
}
