# What `cmake --install` writes: a tree that works wherever it is moved to.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KOframework)
configure_package_config_file(cmake/KOframeworkConfig.cmake.in KOframeworkConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(KOframeworkConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KOframeworkConfig.cmake ${PROJECT_BINARY_DIR}/KOframeworkConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)
# Plug-ins have a place also where nobody has put one.
install(DIRECTORY DESTINATION ${KO_INSTALL_HOME}/plugins COMPONENT runtime)
install(EXPORT KOframeworkTargets NAMESPACE KO:: DESTINATION ${package_dir} COMPONENT development)
if(KO_EXAMPLES)
  install(EXPORT KOcompositorTargets NAMESPACE KO:: DESTINATION ${package_dir} COMPONENT examples)
endif()

# The .pc file finds its prefix from where it lies itself, however deep that is.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
  OUTPUT_VARIABLE KO_PC_TO_PREFIX)
configure_file(cmake/koframework.pc.in koframework.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/koframework.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
