# Functions that build a sibling library, a module of the framework, a test program and a bench. Each CMakeLists.txt only
# lists its files and its neighbours, by role.

# An installed tree can be moved: it has the same layout on every distribution, and its libraries find each other by
# relative run paths. A system-wide installation uses the system's library folder, which the loader searches by default;
# message catalogues and plug-ins then have a folder of their own beside the libraries, since the parent folder is shared
# with other software. KO_HOME is the relative path from the libraries to the installation directory, the folder that
# contains the messages and plug-ins.
if(KO_SYSTEM_WIDE)
  set(KO_HOME koframework${PROJECT_VERSION_MAJOR})
else()
  set(KO_HOME ..)
  set(CMAKE_INSTALL_LIBDIR lib CACHE STRING "Where libraries are installed, below the prefix")
  set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()
include(GNUInstallDirs)
cmake_path(SET KO_INSTALL_HOME NORMALIZE ${CMAKE_INSTALL_LIBDIR}/${KO_HOME})
cmake_path(SET KO_BUILD_HOME NORMALIZE ${PROJECT_BINARY_DIR}/lib/${KO_HOME})

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# A build tree has the layout of an installed one, so that the library finds its messages and plug-ins in both.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

if(WIN32)
  set(KO_SYSTEM windows)
else()
  set(KO_SYSTEM posix)
endif()

find_package(Threads REQUIRED)
if(KO_SYSTEM STREQUAL "windows")
  include(KoWindows)
endif()

# Compiler options of the project's own code; they are not exported to users.
add_library(koOwnOptions INTERFACE)
target_compile_options(koOwnOptions INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # False positives: with optimisation, g++ 12 reports overlapping copies in `"text" + std::string` (GCC bug 105651).
  target_compile_options(koOwnOptions INTERFACE -Wno-restrict -Wno-stringop-overflow)
endif()
if(KO_DEVELOPER)
  set(CMAKE_COMPILE_WARNING_AS_ERROR ON)
endif()
if(KO_SANITIZE)
  add_compile_options(-fsanitize=${KO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KO_SANITIZE})
endif()

# Calls within a library are direct; calls to other libraries take one indirection.
if(KO_SYSTEM STREQUAL "posix")
  add_compile_options(-fno-semantic-interposition -fno-plt)
  add_link_options(-Wl,-z,now)
endif()
set(CMAKE_INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)

# ko_precompile(<target> <kind>): with KO_PRECOMPILE, all targets of a kind share one precompiled header. Sources include what
# they use nevertheless; the builds without KO_PRECOMPILE check that.
set(KO_PRECOMPILED_library <algorithm> <array> <atomic> <chrono> <exception> <filesystem> <functional> <map> <memory> <mutex>
  <optional> <sstream> <stdexcept> <string> <string_view> <thread> <typeinfo> <utility> <variant> <vector>)
set(KO_PRECOMPILED_test ${KO_PRECOMPILED_library} <gtest/gtest.h> <gmock/gmock.h>)
set(KO_PRECOMPILED_qtLibrary ${KO_PRECOMPILED_library} <QApplication> <QListView> <QPainter>)
set(KO_PRECOMPILED_qtTest ${KO_PRECOMPILED_test} <QApplication> <QListView> <QPainter>)
set(KO_PRECOMPILED_qtLibrary_LINK Qt6::Widgets)
set(KO_PRECOMPILED_test_LINK GTest::gtest GTest::gmock)
set(KO_PRECOMPILED_qtTest_LINK GTest::gtest GTest::gmock Qt6::Widgets)
function(ko_precompile target kind)
  if(NOT KO_PRECOMPILE)
    return()
  endif()
  set(owner koPrecompiled_${kind})
  if(NOT TARGET ${owner})
    # It has the options of the others, but none of their definitions, with which the header would suit one of them only.
    set(source ${PROJECT_BINARY_DIR}/precompiled.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "int main() {}\n")
    get_target_property(type ${target} TYPE)
    if(type STREQUAL EXECUTABLE)
      add_executable(${owner} ${source})
    else()
      add_library(${owner} OBJECT ${source})
    endif()
    target_link_libraries(${owner} PRIVATE koOwnOptions ${KO_PRECOMPILED_${kind}_LINK})
    if(kind MATCHES "^qt")
      target_compile_definitions(${owner} PRIVATE QT_NO_KEYWORDS)
    endif()
    target_precompile_headers(${owner} PRIVATE ${KO_PRECOMPILED_${kind}})
  endif()
  target_precompile_headers(${target} REUSE_FROM ${owner})
endfunction()

set(KO_ROLES PUBLIC_HEADERS TEMPLATE_BODIES PRIVATE_HEADERS SOURCES POSIX_SOURCES WINDOWS_SOURCES CATALOGUES NEIGHBOURS)

# ko_sources(<out> ...): the sources of a room, with those for the target system.
function(ko_sources out)
  cmake_parse_arguments(ROOM "" "" "${KO_ROLES}" ${ARGN})
  set(sources ${ROOM_SOURCES})
  if(KO_SYSTEM STREQUAL "posix")
    list(APPEND sources ${ROOM_POSIX_SOURCES})
  else()
    list(APPEND sources ${ROOM_WINDOWS_SOURCES})
  endif()
  list(APPEND sources ${ROOM_PUBLIC_HEADERS} ${ROOM_TEMPLATE_BODIES} ${ROOM_PRIVATE_HEADERS})
  set(${out} ${sources} PARENT_SCOPE)
endfunction()

# ko_install_headers(<folder> ...): public headers and template bodies keep their include path below include/ko.
function(ko_install_headers folder)
  cmake_parse_arguments(ROOM "" "" "${KO_ROLES}" ${ARGN})
  install(FILES ${ROOM_PUBLIC_HEADERS} ${ROOM_TEMPLATE_BODIES}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ko/${folder} COMPONENT development)
endfunction()

# ko_catalogues(...): copies message catalogues to the folder in which the library searches them, in the build tree and
# installed.
function(ko_catalogues)
  cmake_parse_arguments(ROOM "" "" "${KO_ROLES}" ${ARGN})
  foreach(catalogue IN LISTS ROOM_CATALOGUES)
    cmake_path(GET catalogue FILENAME name)
    configure_file(${catalogue} ${KO_BUILD_HOME}/messages/${name} COPYONLY)
    install(FILES ${catalogue} DESTINATION ${KO_INSTALL_HOME}/messages COMPONENT runtime)
  endforeach()
endfunction()

# ko_shared_library(<target> <name> [<part>]): what is common to all libraries. Each is exported with its part: KOframework unless
# another one is given, whose components for installation are <part> and <part>Development then.
function(ko_shared_library target name)
  set(export KOframeworkTargets)
  set(runtime runtime)
  set(development development)
  if(ARGC GREATER 2)
    set(export KO${ARGV2}Targets)
    set(runtime ${ARGV2})
    set(development ${ARGV2}Development)
  endif()
  set_target_properties(${target} PROPERTIES OUTPUT_NAME KO${name} EXPORT_NAME ${name}
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  add_library(KO::${name} ALIAS ${target})
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:koOwnOptions> PUBLIC Threads::Threads)
  # Link all neighbours, even those without a used symbol: loading them registers their packages. The linker for Windows cannot
  # be told so; there the packages themselves use a function of each neighbour's package.
  # Of a template that a library instantiates, g++ exports for Windows no member that is defined in its class, and emits none in users.
  if(KO_SYSTEM STREQUAL "posix")
    target_link_options(${target} PRIVATE LINKER:--no-as-needed)
  else()
    target_link_options(${target} PRIVATE LINKER:--export-all-symbols)
  endif()
  if(NOT KO_SANITIZE) # the sanitizers' functions are in the program, not in the library
    target_link_options(${target} PRIVATE LINKER:--no-undefined)
  endif()
  install(TARGETS ${target} EXPORT ${export}
    RUNTIME COMPONENT ${runtime}
    ARCHIVE COMPONENT ${development}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${runtime} NAMELINK_COMPONENT ${development})
endfunction()

# ko_platform_library(<name> roles...): one of the sibling libraries, lib KO<name>.
function(ko_platform_library name)
  cmake_parse_arguments(ROOM "" "" "${KO_ROLES}" ${ARGN})
  ko_sources(sources ${ARGN})
  string(TOUPPER ${name} upper)
  add_library(ko_${name} SHARED ${sources})
  ko_shared_library(ko_${name} ${name})
  target_compile_definitions(ko_${name} PRIVATE KO_BUILDING_${upper})
  ko_precompile(ko_${name} library)
  target_include_directories(ko_${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ko>)
  list(TRANSFORM ROOM_NEIGHBOURS PREPEND KO::)
  target_link_libraries(ko_${name} PUBLIC ${ROOM_NEIGHBOURS} PRIVATE ${CMAKE_DL_LIBS})
  ko_install_headers(${name} ${ARGN})
  ko_catalogues(${ARGN})
endfunction()

# ko_module(<name> roles...): one of the modules that make up libKOframework.
function(ko_module name)
  ko_sources(sources ${ARGN})
  list(TRANSFORM sources PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  target_sources(ko_framework PRIVATE ${sources})
  ko_install_headers(framework/${name} ${ARGN})
  ko_catalogues(${ARGN})
endfunction()

# ko_adapter(<name> LINK <library>... roles...): an optional library above the framework, lib KO<name>, for another toolkit or
# service. It is a part of its own: component <name> of find_package, and of the installation.
function(ko_adapter name)
  cmake_parse_arguments(ROOM "" "" "LINK;${KO_ROLES}" ${ARGN})
  ko_sources(sources ${ARGN})
  string(TOUPPER ${name} upper)
  add_library(ko_${name} SHARED ${sources})
  ko_shared_library(ko_${name} ${name} ${name})
  target_compile_definitions(ko_${name} PRIVATE KO_BUILDING_${upper})
  target_link_libraries(ko_${name} PUBLIC KO::framework ${ROOM_LINK})
  install(FILES ${ROOM_PUBLIC_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ko/adapters/${name} COMPONENT ${name}Development)
endfunction()

# ko_test(<name> SOURCES ... [POSIX_SOURCES ...] [WINDOWS_SOURCES ...] [LIBRARIES ...] [QT] [CONCURRENT]): a GoogleTest program; every test runs in a process of its own.
# Headers that differ by system lie in tests/support/posix and tests/support/windows; KO_SUFFIX is the suffix of libraries.
# CONCURRENT marks those that also run under ThreadSanitizer; the target "concurrent_tests" builds these only.
if(KO_DEVELOPER)
  add_custom_target(concurrent_tests)
endif()
function(ko_test name)
  cmake_parse_arguments(TEST "CONCURRENT;QT" "" "SOURCES;POSIX_SOURCES;WINDOWS_SOURCES;LIBRARIES" ${ARGN})
  string(TOUPPER ${KO_SYSTEM} system)
  add_executable(${name} ${TEST_SOURCES} ${TEST_${system}_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests/support/${KO_SYSTEM})
  target_compile_definitions(${name} PRIVATE KO_SUFFIX="${CMAKE_SHARED_LIBRARY_SUFFIX}")
  target_link_libraries(${name} PRIVATE koOwnOptions ${TEST_LIBRARIES} GTest::gtest GTest::gmock GTest::gtest_main)
  set_target_properties(${name} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE OFF)
  if(TEST_QT)
    target_compile_definitions(${name} PRIVATE QT_NO_KEYWORDS)
    target_link_libraries(${name} PRIVATE Qt6::Test)
    ko_precompile(${name} qtTest)
  else()
    ko_precompile(${name} test)
  endif()
  set(labels "")
  if(TEST_CONCURRENT)
    set(labels PROPERTIES LABELS concurrent)
    add_dependencies(concurrent_tests ${name})
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES TEST_PREFIX "${name}." ${labels})
endfunction()

# ko_bench(<name> SOURCES ... LIBRARIES ...): a Google Benchmark program; the target "benches" builds them all.
if(KO_BENCH)
  add_custom_target(benches)
endif()
function(ko_bench name)
  cmake_parse_arguments(BENCH "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${BENCH_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE koOwnOptions ${BENCH_LIBRARIES} benchmark::benchmark)
  add_dependencies(benches ${name})
endfunction()
