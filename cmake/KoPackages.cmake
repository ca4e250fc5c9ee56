# The Debian packages, made by `scripts/package`: libkoframework8 to run an application, libkoframework-dev to write one,
# libkoframework-examples with the example host; where Qt is found, libkoframework-qt8, libkoframework-qt-dev
# and libkoframework-qt-examples.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libkoframework)
set(CPACK_PACKAGE_VENDOR "libKOframework developers")
set(CPACK_PACKAGE_CONTACT "libKOframework developers <developers@koframework.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_OUTPUT_FILE_PREFIX packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime development examples)
if(KO_WITH_QT)
  list(APPEND CPACK_COMPONENTS_ALL qt qtDevelopment qtExamples)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# dpkg-shlibdeps needs the libraries of the runtime package when it examines the programs of the examples.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

# Versions with the same first number are compatible: a program requires the version that it was built with, or later.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# ko_debian_documents(<component> <package> [FILES ...] [DIRECTORIES ...]): documents in the package's documentation folder.
function(ko_debian_documents component package)
  cmake_parse_arguments(DOCUMENT "" "" "FILES;DIRECTORIES" ${ARGN})
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES ${DOCUMENT_FILES} ${PROJECT_BINARY_DIR}/changelog.gz DESTINATION ${folder} COMPONENT ${component})
  install(DIRECTORY ${DOCUMENT_DIRECTORIES} DESTINATION ${folder} COMPONENT ${component})
endfunction()

if(KO_SYSTEM_WIDE)
  execute_process(COMMAND gzip -9 --no-name --stdout CHANGELOG.md WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
  ko_debian_documents(runtime libkoframework${PROJECT_VERSION_MAJOR})
  ko_debian_documents(development libkoframework-dev
    FILES README.md ARCHITECTURE.md CONTRIBUTING.md CHANGELOG.md
    DIRECTORIES docs)
  ko_debian_documents(examples libkoframework-examples
    DIRECTORIES examples/compositor/scripts examples/plugin-template)
  if(KO_WITH_QT)
    ko_debian_documents(qt libkoframework-qt${PROJECT_VERSION_MAJOR})
    ko_debian_documents(qtDevelopment libkoframework-qt-dev)
    ko_debian_documents(qtExamples libkoframework-qt-examples)
  endif()
endif()

# ko_debian_package(<component> NAME ... SECTION ... SUMMARY ... TEXT ... [DEPENDS ...] [SUGGESTS ...])
macro(ko_debian_package component)
  cmake_parse_arguments(PACKAGE "" "NAME;SECTION;SUMMARY;TEXT;DEPENDS;SUGGESTS" "" ${ARGN})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${PACKAGE_NAME})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${PACKAGE_SECTION})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${PACKAGE_SUMMARY}\n${PACKAGE_TEXT}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${PACKAGE_DEPENDS}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_SUGGESTS "${PACKAGE_SUGGESTS}")
endmacro()

set(same_libraries "libkoframework${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")

ko_debian_package(runtime
  NAME libkoframework${PROJECT_VERSION_MAJOR}
  SECTION libs
  SUMMARY "application framework: undo, background jobs, actions, plug-ins"
  TEXT "Commands with undo and redo, background jobs and external programs as jobs,
actions and selections, drag and drop, and plug-ins, for applications that
bring their own user interface and main loop.
.
This package holds the shared libraries and the texts that they show."
)
ko_debian_package(development
  NAME libkoframework-dev
  SECTION libdevel
  SUMMARY "application framework: headers and build files"
  TEXT "Commands with undo and redo, background jobs and external programs as jobs,
actions and selections, drag and drop, and plug-ins, for applications that
bring their own user interface and main loop.
.
This package holds what an application or a plug-in is built with: headers,
build files for CMake and pkg-config, and the documentation."
  DEPENDS "${same_libraries}, libstdc++-12-dev | libstdc++-dev"
  SUGGESTS "libkoframework-examples, cmake, pkgconf"
)
ko_debian_package(examples
  NAME libkoframework-examples
  SECTION graphics
  SUMMARY "application framework: a compositor without a window"
  TEXT "A small host of the framework: it composes pictures of layers, driven by
scripts or from the terminal, with undo, background jobs and plug-ins."
  DEPENDS "${same_libraries}"
)
if(KO_WITH_QT)
  ko_debian_package(qt
    NAME libkoframework-qt${PROJECT_VERSION_MAJOR}
    SECTION libs
    SUMMARY "application framework: windows with Qt"
    TEXT "What an application with Qt widgets needs around its document: the events of
the framework in the loop of Qt, models of the history and of the jobs, menus,
palette and shortcuts, drag and drop and the clipboard."
    DEPENDS "${same_libraries}"
  )
  ko_debian_package(qtDevelopment
    NAME libkoframework-qt-dev
    SECTION libdevel
    SUMMARY "application framework: headers for windows with Qt"
    TEXT "The headers and the build files of libkoframework-qt, with which an
application with Qt widgets is built."
    DEPENDS "libkoframework-qt${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}), libkoframework-dev (= ${PROJECT_VERSION}), qt6-base-dev (>= 6.4)"
  )
  ko_debian_package(qtExamples
    NAME libkoframework-qt-examples
    SECTION graphics
    SUMMARY "application framework: a compositor with a window"
    TEXT "The example host of the framework in a window: it composes pictures of
layers, with undo, background jobs and the plug-ins of libkoframework-examples."
    DEPENDS "libkoframework-qt${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}), libkoframework-examples (= ${PROJECT_VERSION})"
  )
endif()

include(CPack)
