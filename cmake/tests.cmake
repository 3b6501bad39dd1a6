# The tests, under BUILD_TESTING: unit tests (GoogleTest), end-to-end tests
# (bats) and the manual page's lint (groff). A tool that is missing skips its
# tests with a warning; INSTALL_REQUIRE_TEST_TOOLS (the test command) makes
# every one of them required.
if(INSTALL_REQUIRE_TEST_TOOLS)
  set(test_tool_required REQUIRED)
endif()

function(skip_tests what tool package)
  message(WARNING "${what} skipped: ${tool} not found (Debian: apt-get install ${package}; "
                  "scripts/deps.sh installs every test tool). -DBUILD_TESTING=OFF skips all tests.")
endfunction()

# Unit tests: every <folder>/*_test.cpp goes into <folder>_tests, with the
# objects of that folder and of the folders it depends on.
find_package(GTest ${test_tool_required})
if(GTest_FOUND)
  include(GoogleTest)
  foreach(dir IN LISTS INSTALL_SUBSYSTEMS)
    file(GLOB dir_tests CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${dir}/*_test.cpp)
    if(dir_tests)
      objects_for(${dir} test_objects)
      add_executable(${dir}_tests ${dir_tests} ${test_objects})
      target_link_libraries(${dir}_tests PRIVATE install_build_flags GTest::gtest GTest::gtest_main)
      gtest_discover_tests(${dir}_tests DISCOVERY_TIMEOUT 60 TEST_PREFIX ${dir}.)
    endif()
  endforeach()
else()
  skip_tests("Unit tests" GoogleTest libgtest-dev)
endif()

# End-to-end tests: every tests/*.bats and examples/tests/*.bats file runs the
# real program.
find_program(BATS bats ${test_tool_required})
if(BATS)
  file(GLOB bats_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/*.bats
       ${PROJECT_SOURCE_DIR}/examples/tests/*.bats)
  foreach(bats_file IN LISTS bats_files)
    get_filename_component(bats_name ${bats_file} NAME_WE)
    if(bats_file MATCHES "/examples/tests/")
      set(bats_name example.${bats_name})
    endif()
    add_test(NAME e2e.${bats_name} COMMAND ${BATS} --tap ${bats_file})
    set_tests_properties(e2e.${bats_name} PROPERTIES ENVIRONMENT
      "INSTALL_BIN=$<TARGET_FILE:installer>;INSTALL_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
  endforeach()
else()
  skip_tests("End-to-end tests" bats bats)
endif()

# The manual page renders without a single warning.
find_program(GROFF groff ${test_tool_required})
if(GROFF)
  add_test(NAME docs.manual_page COMMAND ${GROFF} -ww -man -z ${INSTALL_MANUAL_PAGE})
  set_tests_properties(docs.manual_page PROPERTIES FAIL_REGULAR_EXPRESSION ".")
else()
  skip_tests("The manual page's lint" groff groff-base)
endif()

# The modules include each other in no circle.
find_package(Python3 COMPONENTS Interpreter ${test_tool_required})
if(Python3_Interpreter_FOUND)
  add_test(NAME lint.include_circles
           COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/include_circles.py
                   ${PROJECT_SOURCE_DIR})
else()
  skip_tests("The include-circle check" python3 python3)
endif()

# The sources follow .clang-format (scripts/format_check.sh --fix formats them).
find_program(CLANG_FORMAT clang-format ${test_tool_required})
if(CLANG_FORMAT)
  add_test(NAME lint.format COMMAND ${PROJECT_SOURCE_DIR}/scripts/format_check.sh)
else()
  skip_tests("The format check" clang-format clang-format)
endif()
