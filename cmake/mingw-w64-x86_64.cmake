# Cross-builds the Windows DLL and its tests with MinGW-w64 on a Debian host.
# The posix thread model of the compiler is used because the win32 one has no std::thread.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(TAV_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${TAV_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TAV_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${TAV_MINGW_PREFIX}-windres)
set(CMAKE_MC_COMPILER ${TAV_MINGW_PREFIX}-windmc)

set(CMAKE_FIND_ROOT_PATH /usr/${TAV_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Test executables run under Wine; ctest prefixes every test command with this.
find_program(TAV_WINE_PROGRAM NAMES wine64 wine)
if(TAV_WINE_PROGRAM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${TAV_WINE_PROGRAM})
endif()
