# Concurrency tests: host threads writing parameters and loading states while an
# audio thread renders and the message thread delivers. In a ThreadSanitizer build
# (FLUXDECK_TSAN, see tools/run-tsan.sh) or an AddressSanitizer build
# (FLUXDECK_ASAN, tools/run-asan.sh) they are the only tests and carry the label
# "tsan" or "asan"; a normal build runs them as plain stress tests (label
# "concurrency") when FLUXDECK_CONCURRENCY_TESTS is on.
#
# The sanitizer flags must reach every compiled file, JUCE's module sources
# included, so they come in through CMAKE_<LANG>_FLAGS and the linker flags on
# the configure line rather than through target properties.

option(FLUXDECK_TSAN "Build only the concurrency tests, for ThreadSanitizer" OFF)
option(FLUXDECK_ASAN "Build only the concurrency tests, for AddressSanitizer" OFF)
option(FLUXDECK_CONCURRENCY_TESTS "Build the concurrency tests in a normal build too" OFF)

if(FLUXDECK_TSAN AND FLUXDECK_ASAN)
  message(FATAL_ERROR "FLUXDECK_TSAN and FLUXDECK_ASAN need build folders of their own")
endif()
set(FLUXDECK_SANITIZER "")
if(FLUXDECK_TSAN)
  set(FLUXDECK_SANITIZER thread)
  set(FLUXDECK_SANITIZER_SCRIPT tools/run-tsan.sh)
elseif(FLUXDECK_ASAN)
  set(FLUXDECK_SANITIZER address)
  set(FLUXDECK_SANITIZER_SCRIPT tools/run-asan.sh)
endif()

if(FLUXDECK_SANITIZER)
  foreach(flags_variable CMAKE_CXX_FLAGS CMAKE_C_FLAGS CMAKE_EXE_LINKER_FLAGS CMAKE_SHARED_LINKER_FLAGS)
    if(NOT "${${flags_variable}}" MATCHES "-fsanitize=${FLUXDECK_SANITIZER}")
      message(FATAL_ERROR "this build needs -fsanitize=${FLUXDECK_SANITIZER} in ${flags_variable} "
                          "(${FLUXDECK_SANITIZER_SCRIPT} sets it)")
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
elseif(FLUXDECK_ASAN)
  # JUCE's process-wide singletons outlive the run; leaks at exit are not findings.
  add_test(NAME concurrency_asan COMMAND fluxdeck_concurrency_tests)
  set_tests_properties(concurrency_asan PROPERTIES
    LABELS asan
    TIMEOUT 900
    ENVIRONMENT "ASAN_OPTIONS=detect_leaks=0:halt_on_error=1"
    FAIL_REGULAR_EXPRESSION "ERROR: AddressSanitizer")
else()
  add_test(NAME concurrency COMMAND fluxdeck_concurrency_tests)
  set_tests_properties(concurrency PROPERTIES LABELS concurrency TIMEOUT 300)
endif()
