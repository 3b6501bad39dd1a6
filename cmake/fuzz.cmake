# libFuzzer targets: fuzz/<name>_fuzz.cpp -> <name>_fuzz, linked with every
# module's objects. Each is also a test, fuzz.<name>, that replays the seed
# corpus in fuzz/corpus/<name>/ and then runs a fixed number of mutated inputs
# from a fixed seed, so a regression shows in the ordinary test run.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "INSTALL_FUZZ needs clang++ (CMAKE_CXX_COMPILER=clang++)")
endif()

set(INSTALL_FUZZ_RUNS 3000 CACHE STRING "Inputs each fuzz test runs")

enable_testing()
file(GLOB fuzz_sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/fuzz/*_fuzz.cpp)
foreach(fuzz_source IN LISTS fuzz_sources)
  get_filename_component(fuzz_target ${fuzz_source} NAME_WE)
  string(REGEX REPLACE "_fuzz$" "" fuzz_name ${fuzz_target})
  add_executable(${fuzz_target} ${fuzz_source} ${CMAKE_SOURCE_DIR}/fuzz/fuzz_support.cpp
                 ${ALL_OBJECTS})
  target_link_options(${fuzz_target} PRIVATE -fsanitize=fuzzer,address,undefined)
  add_test(NAME fuzz.${fuzz_name}
           COMMAND ${CMAKE_SOURCE_DIR}/fuzz/replay.sh ${CMAKE_BINARY_DIR}/${fuzz_target}
                   ${CMAKE_SOURCE_DIR}/fuzz/corpus/${fuzz_name} ${INSTALL_FUZZ_RUNS})
endforeach()
