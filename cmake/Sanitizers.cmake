# Concurrency tests: host threads writing parameters while an audio thread
# renders and the message thread delivers. In a ThreadSanitizer build
# (FLUXDECK_TSAN, see tools/run-tsan.sh) they are the only tests and carry the
# label "tsan"; a normal build runs them as plain stress tests (label
# "concurrency") when FLUXDECK_CONCURRENCY_TESTS is on.
#
# The sanitizer flags must reach every compiled file, JUCE's module sources
# included, so they come in through CMAKE_<LANG>_FLAGS and the linker flags on
# the configure line rather than through target properties.

option(FLUXDECK_TSAN "Build only the concurrency tests, for ThreadSanitizer" OFF)
option(FLUXDECK_CONCURRENCY_TESTS "Build the concurrency tests in a normal build too" OFF)

if(FLUXDECK_TSAN)
  foreach(flags_variable CMAKE_CXX_FLAGS CMAKE_C_FLAGS CMAKE_EXE_LINKER_FLAGS CMAKE_SHARED_LINKER_FLAGS)
    if(NOT "${${flags_variable}}" MATCHES "-fsanitize=thread")
      message(FATAL_ERROR "FLUXDECK_TSAN needs -fsanitize=thread in ${flags_variable} (tools/run-tsan.sh sets it)")
    endif()
  endforeach()
elseif(NOT FLUXDECK_TESTS OR NOT FLUXDECK_CONCURRENCY_TESTS)
  return()
endif()

file(GLOB FLUXDECK_CONCURRENCY_TEST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/concurrency/*.cpp)
if(NOT FLUXDECK_CONCURRENCY_TEST_SOURCES)
  return()
endif()

find_package(GTest REQUIRED)
find_package(Threads REQUIRED)
enable_testing()

add_executable(fluxdeck_concurrency_tests ${FLUXDECK_CONCURRENCY_TEST_SOURCES}
                                          ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp)
fluxdeck_use_shared_code(fluxdeck_concurrency_tests)
target_include_directories(fluxdeck_concurrency_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(fluxdeck_concurrency_tests PRIVATE fluxdeck_warnings GTest::gtest Threads::Threads)

# One ctest entry for the whole program: under the sanitizer the start-up is
# slow, and the tests share nothing that would gain from running apart.
if(FLUXDECK_TSAN)
  set(FLUXDECK_TSAN_SUPPRESSIONS "${PROJECT_SOURCE_DIR}/tools/tsan.supp")
  set(tsan_options "halt_on_error=1 second_deadlock_stack=1")
  if(EXISTS "${FLUXDECK_TSAN_SUPPRESSIONS}")
    string(APPEND tsan_options " suppressions=${FLUXDECK_TSAN_SUPPRESSIONS}")
  endif()
  add_test(NAME concurrency_tsan COMMAND fluxdeck_concurrency_tests)
  set_tests_properties(concurrency_tsan PROPERTIES
    LABELS tsan
    TIMEOUT 900
    ENVIRONMENT "TSAN_OPTIONS=${tsan_options}"
    # a report with halt_on_error ends the program with 66; a report without it
    # still prints this line, which must fail the test too
    FAIL_REGULAR_EXPRESSION "WARNING: ThreadSanitizer")
else()
  add_test(NAME concurrency COMMAND fluxdeck_concurrency_tests)
  set_tests_properties(concurrency PROPERTIES LABELS concurrency TIMEOUT 300)
endif()
