# Tests that load the built bundle through the headless host, and command-line
# checks of the render tool. Both need the host tools.
if(NOT TARGET fluxdeck_host OR NOT TARGET flux-deck-render)
  return()
endif()

file(GLOB FLUXDECK_HOST_TEST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/host/*.cpp)
add_executable(fluxdeck_host_tests
  ${FLUXDECK_HOST_TEST_SOURCES}
  ${PROJECT_SOURCE_DIR}/tools/render/RenderOptions.cpp
  ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp)
target_include_directories(fluxdeck_host_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR}/tools)
target_link_libraries(fluxdeck_host_tests PRIVATE fluxdeck_host fluxdeck_warnings GTest::gtest)
target_compile_definitions(fluxdeck_host_tests PRIVATE
  FLUXDECK_BUILT_VST3_MODULE="${FLUXDECK_BUILT_VST3_MODULE}"
  FLUXDECK_RESOURCE_ARCHIVE="${FLUXDECK_ARCHIVE_FILE}")
add_dependencies(fluxdeck_host_tests FluxDeck_VST3)
gtest_discover_tests(fluxdeck_host_tests DISCOVERY_MODE PRE_TEST PROPERTIES LABELS host)

set(FLUXDECK_RENDER_CLI_DIR ${CMAKE_CURRENT_BINARY_DIR}/render-cli)
foreach(cli_case default set-parameter list missing-bundle unknown-parameter unreadable-input)
  add_test(NAME render_cli.${cli_case}
    COMMAND ${CMAKE_COMMAND}
      -DTOOL=$<TARGET_FILE:flux-deck-render>
      -DCASE=${cli_case}
      -DWORK_DIR=${FLUXDECK_RENDER_CLI_DIR}
      -P ${PROJECT_SOURCE_DIR}/tests/host/RenderCli.cmake)
  set_tests_properties(render_cli.${cli_case} PROPERTIES LABELS host TIMEOUT 60)
endforeach()

# --preset, --tape-preset and --list-presets of the render tool.
foreach(cli_case list-presets presets bad-preset not-a-preset)
  add_test(NAME render_cli.${cli_case}
    COMMAND ${CMAKE_COMMAND}
      -DTOOL=$<TARGET_FILE:flux-deck-render>
      -DCASE=${cli_case}
      -DWORK_DIR=${FLUXDECK_RENDER_CLI_DIR}
      -P ${PROJECT_SOURCE_DIR}/tests/host/RenderPresetCli.cmake)
  set_tests_properties(render_cli.${cli_case} PROPERTIES LABELS host TIMEOUT 60)
endforeach()
