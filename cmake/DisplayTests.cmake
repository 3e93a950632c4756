# The window's pictures: their curves against the deck stages, the live feeds, and
# offscreen renders (written to display-snapshots/ beside the program).
file(GLOB FLUXDECK_DISPLAY_TEST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/editor/test_displays*.cpp)
list(FILTER FLUXDECK_DISPLAY_TEST_SOURCES EXCLUDE REGEX "_audio_thread\\.cpp$")
if(FLUXDECK_DISPLAY_TEST_SOURCES)
  add_executable(fluxdeck_display_tests ${FLUXDECK_DISPLAY_TEST_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp)
  fluxdeck_use_shared_code(fluxdeck_display_tests)
  target_include_directories(fluxdeck_display_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(fluxdeck_display_tests PRIVATE fluxdeck_warnings GTest::gtest)
  gtest_discover_tests(fluxdeck_display_tests DISCOVERY_MODE PRE_TEST PROPERTIES LABELS editor)
endif()

# Replaces the allocation functions, so it is a program of its own.
if(EXISTS ${PROJECT_SOURCE_DIR}/tests/editor/test_displays_audio_thread.cpp)
  add_executable(fluxdeck_display_realtime_tests ${PROJECT_SOURCE_DIR}/tests/editor/test_displays_audio_thread.cpp
                 ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp)
  fluxdeck_use_shared_code(fluxdeck_display_realtime_tests)
  target_include_directories(fluxdeck_display_realtime_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(fluxdeck_display_realtime_tests PRIVATE fluxdeck_warnings GTest::gtest)
  gtest_discover_tests(fluxdeck_display_realtime_tests DISCOVERY_MODE PRE_TEST PROPERTIES LABELS realtime)
endif()
