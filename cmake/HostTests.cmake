# Tests that load the built bundle through the headless host, and command-line
# checks of the render tool. Both need the host tools.
if(NOT TARGET fluxdeck_host OR NOT TARGET flux-deck-render)
  return()
endif()

file(GLOB FLUXDECK_HOST_TEST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/host/*.cpp)
add_executable(fluxdeck_host_tests
  ${FLUXDECK_HOST_TEST_SOURCES}
  ${PROJECT_SOURCE_DIR}/tools/render/RenderOptions.cpp
  ${PROJECT_SOURCE_DIR}/tools/render/AudioAnalysis.cpp
  ${PROJECT_SOURCE_DIR}/tools/render/Spectrogram.cpp
  ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp)
target_include_directories(fluxdeck_host_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR}/tools)
target_link_libraries(fluxdeck_host_tests PRIVATE fluxdeck_host fluxdeck_warnings GTest::gtest)
target_compile_definitions(fluxdeck_host_tests PRIVATE
  FLUXDECK_BUILT_VST3_MODULE="${FLUXDECK_BUILT_VST3_MODULE}"
  FLUXDECK_BUILT_LV2_MODULE="$<TARGET_FILE:FluxDeck_LV2>"
  FLUXDECK_RESOURCE_ARCHIVE="${FLUXDECK_ARCHIVE_FILE}")
add_dependencies(fluxdeck_host_tests FluxDeck_VST3 FluxDeck_LV2)
gtest_discover_tests(fluxdeck_host_tests DISCOVERY_MODE PRE_TEST PROPERTIES LABELS host)

set(FLUXDECK_RENDER_CLI_DIR ${CMAKE_CURRENT_BINARY_DIR}/render-cli)
find_program(FLUXDECK_SOX sox)
foreach(cli_case default set-parameter list missing-bundle unknown-parameter unreadable-input
                 bad-value read-back settings-in-order float-wav-header lv2-same-as-vst3 wrong-bundles
                 unwritable-places analyze-and-draw)
  add_test(NAME render_cli.${cli_case}
    COMMAND ${CMAKE_COMMAND}
      -DTOOL=$<TARGET_FILE:flux-deck-render>
      -DCASE=${cli_case}
      -DWORK_DIR=${FLUXDECK_RENDER_CLI_DIR}/${cli_case}
      "-DLV2_BUNDLE=$<TARGET_FILE_DIR:FluxDeck_LV2>"
      -DSOX=${FLUXDECK_SOX}
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

# lilv reads the LV2 bundle's Turtle as hosts do.
find_program(FLUXDECK_LV2LS lv2ls)
find_program(FLUXDECK_LV2INFO lv2info)
add_test(NAME lv2_turtle
  COMMAND ${CMAKE_COMMAND}
    "-DLV2_BUNDLE=$<TARGET_FILE_DIR:FluxDeck_LV2>"
    -DURI=${FLUXDECK_LV2_URI}
    -DLV2LS=${FLUXDECK_LV2LS}
    -DLV2INFO=${FLUXDECK_LV2INFO}
    -P ${PROJECT_SOURCE_DIR}/tests/host/Lv2Turtle.cmake)
set_tests_properties(lv2_turtle PROPERTIES LABELS host TIMEOUT 60)

# cmake --install (system and per user), the Debian package and what it installs.
add_test(NAME installed_package
  COMMAND ${CMAKE_COMMAND}
    -DBUILD_DIR=${CMAKE_BINARY_DIR}
    -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/installed-package
    -DCPACK=${CMAKE_CPACK_COMMAND}
    -DSOX=${FLUXDECK_SOX}
    -P ${PROJECT_SOURCE_DIR}/tests/host/InstalledPackage.cmake)
set_tests_properties(installed_package PROPERTIES LABELS "host;package" TIMEOUT 900)

# A real DAW: Ardour's headless session interpreter loads both builds, saves, reopens
# and exports (about a minute).
add_test(NAME ardour_session
  COMMAND bash ${PROJECT_SOURCE_DIR}/tools/run-ardour-check.sh ${CMAKE_BINARY_DIR})
set_tests_properties(ardour_session PROPERTIES LABELS "host;daw" TIMEOUT 900)
