find_package(GTest REQUIRED)
include(GoogleTest)

# Deck stages alone: no JUCE, quick to build.
file(GLOB FLUXDECK_DSP_TEST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/tape/*.cpp)
if(FLUXDECK_DSP_TEST_SOURCES)
  add_executable(fluxdeck_dsp_tests ${FLUXDECK_DSP_TEST_SOURCES})
  target_link_libraries(fluxdeck_dsp_tests PRIVATE fluxdeck_dsp fluxdeck_warnings GTest::gtest GTest::gtest_main)
  gtest_discover_tests(fluxdeck_dsp_tests DISCOVERY_MODE PRE_TEST PROPERTIES LABELS dsp)
endif()

# Everything that needs the element tree, the engine, the plug-in or JUCE.
file(GLOB FLUXDECK_TEST_SOURCES CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/tests/element/*.cpp
  ${PROJECT_SOURCE_DIR}/tests/engine/*.cpp
  ${PROJECT_SOURCE_DIR}/tests/resources/*.cpp
  ${PROJECT_SOURCE_DIR}/tests/plugin/*.cpp
  ${PROJECT_SOURCE_DIR}/tests/tape/processor/*.cpp)
if(FLUXDECK_TEST_SOURCES)
  add_executable(fluxdeck_tests ${FLUXDECK_TEST_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp)
  fluxdeck_use_shared_code(fluxdeck_tests)
  target_include_directories(fluxdeck_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(fluxdeck_tests PRIVATE fluxdeck_warnings GTest::gtest GTest::gmock)
  gtest_discover_tests(fluxdeck_tests DISCOVERY_MODE PRE_TEST PROPERTIES LABELS unit)
endif()

# The audio-thread checks replace the global allocation functions, so they
# live in an executable of their own.
file(GLOB FLUXDECK_RT_TEST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/realtime/*.cpp)
if(FLUXDECK_RT_TEST_SOURCES)
  add_executable(fluxdeck_realtime_tests ${FLUXDECK_RT_TEST_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp
                 ${PROJECT_SOURCE_DIR}/tests/support/AllocationCounter.cpp)
  fluxdeck_use_shared_code(fluxdeck_realtime_tests)
  target_include_directories(fluxdeck_realtime_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(fluxdeck_realtime_tests PRIVATE fluxdeck_warnings GTest::gtest)
  gtest_discover_tests(fluxdeck_realtime_tests DISCOVERY_MODE PRE_TEST PROPERTIES LABELS realtime)
endif()

# The window, drawn in-process with no display.
file(GLOB FLUXDECK_EDITOR_TEST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/editor/*.cpp)
if(FLUXDECK_EDITOR_TEST_SOURCES)
  add_executable(fluxdeck_editor_tests ${FLUXDECK_EDITOR_TEST_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp)
  fluxdeck_use_shared_code(fluxdeck_editor_tests)
  target_include_directories(fluxdeck_editor_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(fluxdeck_editor_tests PRIVATE fluxdeck_warnings GTest::gtest)
  # Windows write the user's shared settings when they close: one test process at a time.
  gtest_discover_tests(fluxdeck_editor_tests DISCOVERY_MODE PRE_TEST
                       PROPERTIES LABELS editor RESOURCE_LOCK fluxdeck_user_settings)

  # Counts the audio thread's allocations with replaced allocation functions.
  add_executable(fluxdeck_editor_realtime_tests ${PROJECT_SOURCE_DIR}/tests/editor/realtime/test_window_while_rendering.cpp
                 ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp ${PROJECT_SOURCE_DIR}/tests/support/AllocationCounter.cpp)
  fluxdeck_use_shared_code(fluxdeck_editor_realtime_tests)
  target_include_directories(fluxdeck_editor_realtime_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(fluxdeck_editor_realtime_tests PRIVATE fluxdeck_warnings GTest::gtest)
  gtest_discover_tests(fluxdeck_editor_realtime_tests DISCOVERY_MODE PRE_TEST
                       PROPERTIES LABELS "editor;realtime" RESOURCE_LOCK fluxdeck_user_settings)
endif()

include(${PROJECT_SOURCE_DIR}/cmake/DisplayTests.cmake OPTIONAL)
include(${PROJECT_SOURCE_DIR}/cmake/HostTests.cmake OPTIONAL)

