# imsdk_add_test(<name> <sources>... [LIBS <targets>...] [LABELS <labels>...])
#
# One GoogleTest program, one CTest entry. A test labelled "threads" also runs under
# ThreadSanitizer. Every run leaves its totals in <build>/test-results/<name>.json.

if(NOT BUILD_TESTING)
  return()
endif()

if(WIN32)
  # The cross compiler has no installed GoogleTest; Debian's source package builds for it.
  set(INSTALL_GTEST OFF)
  set(BUILD_SHARED_LIBS OFF)
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${PROJECT_SOURCE_DIR}/scripts/dev/wine-run.sh")
else()
  find_package(GTest REQUIRED)
endif()

set(IMSDK_TEST_TIMEOUT 900 CACHE STRING "Seconds one test program may take")
set(imsdkTestResults "${CMAKE_BINARY_DIR}/test-results")

# Builds just the tests that run under ThreadSanitizer.
add_custom_target(imsdk_thread_tests)

function(imsdk_add_test name)
  set(resultDrive "$<$<BOOL:${WIN32}>:Z:>")  # Wine's name for the root of the file system
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBS;LABELS")
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE
    imsdk_contracts imsdk_warnings ${arg_LIBS} GTest::gmock GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name} "--gtest_output=json:${resultDrive}${imsdkTestResults}/${name}.json")
  set_tests_properties(${name} PROPERTIES
    LABELS "${arg_LABELS}" TIMEOUT ${IMSDK_TEST_TIMEOUT}
    ENVIRONMENT "UBSAN_OPTIONS=print_stacktrace=1")
  if("threads" IN_LIST arg_LABELS)
    add_dependencies(imsdk_thread_tests ${name})
  endif()
endfunction()
