# Compiler and platform settings shared by every target of the project.

# The platform seam: each subsystem keeps its operating-system calls in a posix/ or a win32/
# directory beside its generic sources, and only the one for the target platform is built.
if(WIN32)
  set(TAV_OS_DIR win32)
else()
  set(TAV_OS_DIR posix)
endif()

set(TAV_WARNING_FLAGS -Wall -Wextra)
if(TAV_WARNINGS_AS_ERRORS)
  list(APPEND TAV_WARNING_FLAGS -Werror)
endif()

# Fuzzing always runs with the sanitizers: they turn silent memory errors into findings, and
# their runtime provides the coverage hooks that every instrumented program calls.
if(TAV_BUILD_FUZZERS)
  set(TAV_SANITIZE ON)
endif()

if(TAV_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# ThreadSanitizer watches the code that several threads run at once (the trace buffer's lock).
# It cannot share a build with AddressSanitizer.
option(TAV_SANITIZE_THREAD "Build everything with ThreadSanitizer" OFF)
if(TAV_SANITIZE_THREAD)
  if(TAV_SANITIZE)
    message(FATAL_ERROR "TAV_SANITIZE_THREAD cannot be combined with TAV_SANITIZE or the fuzzers")
  endif()
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()

if(TAV_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "The fuzz targets need clang (libFuzzer); configure with CXX=clang++")
  endif()
  # The library and everything else get coverage instrumentation; only the fuzz targets
  # link the libFuzzer driver.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(MINGW)
  # tav.dll and the test programs carry their own copy of the compiler runtime, so that
  # nothing but the DLL itself has to be shipped beside a program.
  add_link_options(-static -static-libgcc -static-libstdc++)
endif()

# Applies the project's warning flags to one of its own targets (never to third-party code).
function(tav_target_warnings target)
  target_compile_options(${target} PRIVATE ${TAV_WARNING_FLAGS})
endfunction()

include(TavSubsystem)
