# Builds for Windows, 64 bit, on another system: the compiler is that of MinGW-w64 with POSIX threads, programs run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(KO_CROSS x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${KO_CROSS}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KO_CROSS}-g++-posix)
set(CMAKE_RC_COMPILER ${KO_CROSS}-windres)

# Headers and libraries are those of the target; programs those of this system.
set(CMAKE_FIND_ROOT_PATH /usr/${KO_CROSS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)
endif()
