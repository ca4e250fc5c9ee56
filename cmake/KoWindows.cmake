# What only a build for Windows needs: the compiler's libraries beside the programs, and the libraries that Debian has no
# package of for this compiler.

# The loader finds libraries beside the program, so that they all lie in bin/, in the build tree and installed. The compiler's own
# ones are shared as well: exceptions, and the count of those that are under way, belong to one C++ library in a process.
set(KO_RUNTIME_LIBRARIES "")
foreach(library libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT EXISTS ${path})
    find_file(path_of_${library} ${library} PATHS ${CMAKE_FIND_ROOT_PATH}/lib ${CMAKE_FIND_ROOT_PATH}/bin REQUIRED NO_CMAKE_FIND_ROOT_PATH)
    set(path ${path_of_${library}})
  endif()
  list(APPEND KO_RUNTIME_LIBRARIES ${path})
  configure_file(${path} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${library} COPYONLY)
endforeach()
install(FILES ${KO_RUNTIME_LIBRARIES} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)

# The interface of Windows 10, in UTF-16.
add_compile_definitions(_WIN32_WINNT=0x0A00 UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)

# GoogleTest from the sources that Debian installs, as there is no package of it for this compiler.
function(ko_add_googletest)
  set(sources /usr/src/googletest CACHE PATH "The sources of GoogleTest")
  set(BUILD_SHARED_LIBS OFF)
  set(INSTALL_GTEST OFF)
  set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
  set(gtest_disable_pthreads OFF)
  enable_language(C)
  add_subdirectory(${sources} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  foreach(library gtest gtest_main gmock)
    if(NOT TARGET GTest::${library})
      add_library(GTest::${library} ALIAS ${library})
    endif()
  endforeach()
endfunction()
