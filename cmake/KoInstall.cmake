# The contents of an installed tree, which works wherever it is moved to.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KOframework)
configure_package_config_file(cmake/KOframeworkConfig.cmake.in KOframeworkConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(KOframeworkConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KOframeworkConfig.cmake ${PROJECT_BINARY_DIR}/KOframeworkConfigVersion.cmake
  cmake/KoPlugIn.cmake cmake/koPlugIn.cpp.in DESTINATION ${package_dir} COMPONENT development)
# The folder for plug-ins, also while there are none.
install(DIRECTORY DESTINATION ${KO_INSTALL_HOME}/plugins COMPONENT runtime)
install(EXPORT KOframeworkTargets NAMESPACE KO:: DESTINATION ${package_dir} COMPONENT development)
if(KO_WITH_QT)
  install(EXPORT KOqtTargets NAMESPACE KO:: DESTINATION ${package_dir} COMPONENT qtDevelopment)
endif()
if(KO_EXAMPLES)
  install(EXPORT KOcompositorTargets NAMESPACE KO:: DESTINATION ${package_dir} COMPONENT examples)
endif()

# The .pc file finds the prefix by its own place in the tree.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
  OUTPUT_VARIABLE KO_PC_TO_PREFIX)
# The loader finds system-wide libraries by itself; a program that is linked with others has to know where they are. The file
# sets no language standard: it would replace a newer one that stands before it on the command line.
set(KO_PC_RUN_PATH "")
if(NOT KO_SYSTEM_WIDE)
  set(KO_PC_RUN_PATH "-Wl,-rpath,\${libdir} ")
endif()
configure_file(cmake/koframework.pc.in koframework.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/koframework.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
if(KO_WITH_QT)
  configure_file(cmake/koframework-qt.pc.in koframework-qt.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/koframework-qt.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT qtDevelopment)
endif()
