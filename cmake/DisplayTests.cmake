# The window's pictures: their curves against the deck stages, the live feeds, and
# offscreen renders (written to display-snapshots/ beside the program). Where the
# editor suite already takes every file of tests/editor, they run there.
if(NOT TARGET fluxdeck_editor_tests)
  file(GLOB FLUXDECK_DISPLAY_TEST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/editor/test_displays*.cpp)
  if(FLUXDECK_DISPLAY_TEST_SOURCES)
    add_executable(fluxdeck_display_tests ${FLUXDECK_DISPLAY_TEST_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp)
    fluxdeck_use_shared_code(fluxdeck_display_tests)
    target_include_directories(fluxdeck_display_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(fluxdeck_display_tests PRIVATE fluxdeck_warnings GTest::gtest)
    gtest_discover_tests(fluxdeck_display_tests DISCOVERY_MODE PRE_TEST PROPERTIES LABELS editor)
  endif()
endif()

# Replaces the allocation functions, so it is a program of its own.
set(FLUXDECK_DISPLAY_RT_TEST ${PROJECT_SOURCE_DIR}/tests/editor/realtime/test_displays_audio_thread.cpp)
if(EXISTS ${FLUXDECK_DISPLAY_RT_TEST})
  add_executable(fluxdeck_display_realtime_tests ${FLUXDECK_DISPLAY_RT_TEST} ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp
                 ${PROJECT_SOURCE_DIR}/tests/support/AllocationCounter.cpp)
  fluxdeck_use_shared_code(fluxdeck_display_realtime_tests)
  target_include_directories(fluxdeck_display_realtime_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(fluxdeck_display_realtime_tests PRIVATE fluxdeck_warnings GTest::gtest)
  gtest_discover_tests(fluxdeck_display_realtime_tests DISCOVERY_MODE PRE_TEST PROPERTIES LABELS "editor;realtime")
endif()
