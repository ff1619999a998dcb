# Every subsystem directory is built the same way: its generic sources, plus the sources of the
# directory named after the target platform (posix/ or win32/), which hold all its OS calls.
function(tav_add_subsystem_sources)
  file(GLOB generic CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  file(GLOB platform CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${TAV_OS_DIR}/*.cpp)
  target_sources(tav PRIVATE ${generic} ${platform})
endfunction()

# One test program per subsystem test directory, from all its *_test.cpp files (and *.c
# helpers), each one ctest test.
function(tav_add_subsystem_tests name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.c)
  tav_add_test_program(${name} ${sources})
endfunction()
