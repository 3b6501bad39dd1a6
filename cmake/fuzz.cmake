# libFuzzer targets: fuzz/<name>_fuzz.cpp -> <name>_fuzz, linked with every
# module's objects. Under BUILD_TESTING each is also a test, fuzz.<name>, that
# replays the seeds (fuzz/seeds.sh: fuzz/corpus/<name>/ and the test data and
# example files that suit the target) and then runs a fixed number
# of mutated inputs from a fixed seed, so a regression shows in the ordinary
# test run.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "INSTALL_FUZZ needs clang++ (CMAKE_CXX_COMPILER=clang++)")
endif()

set(INSTALL_FUZZ_RUNS 3000 CACHE STRING "Inputs each fuzz test runs")

file(GLOB fuzz_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/fuzz/*_fuzz.cpp)
foreach(fuzz_source IN LISTS fuzz_sources)
  get_filename_component(fuzz_target ${fuzz_source} NAME_WE)
  string(REGEX REPLACE "_fuzz$" "" fuzz_name ${fuzz_target})
  add_executable(${fuzz_target} ${fuzz_source} ${PROJECT_SOURCE_DIR}/fuzz/fuzz_support.cpp
                 ${ALL_OBJECTS})
  target_link_libraries(${fuzz_target} PRIVATE install_build_flags)
  set_target_properties(${fuzz_target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
  if(BUILD_TESTING)
    add_test(NAME fuzz.${fuzz_name}
             COMMAND ${PROJECT_SOURCE_DIR}/fuzz/replay.sh $<TARGET_FILE:${fuzz_target}>
                     ${fuzz_name} ${INSTALL_FUZZ_RUNS})
  endif()
endforeach()
