# The window's images are drawn by a program of this repository at build time, into
# the build tree, and packed into the resource archive from there: a change of style
# is a change of code. The program shares the layout table with the editor's panels.

# Sanitizer and fuzzer builds take the images another build has drawn: drawing them
# with an instrumented program would only cost minutes.
set(FLUXDECK_PREDRAWN_ASSETS "" CACHE PATH "Folder of images already drawn by another build")
if(FLUXDECK_PREDRAWN_ASSETS AND EXISTS "${FLUXDECK_PREDRAWN_ASSETS}/drawn.stamp")
  fluxdeck_add_resource_root("${FLUXDECK_PREDRAWN_ASSETS}" DEPENDS "${FLUXDECK_PREDRAWN_ASSETS}/drawn.stamp")
  return()
endif()

set(FLUXDECK_DRAWN_ASSETS "${CMAKE_BINARY_DIR}/drawn_assets")
set(FLUXDECK_DRAWN_STAMP "${FLUXDECK_DRAWN_ASSETS}/drawn.stamp")

file(GLOB FLUXDECK_ASSET_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/assets/*.cpp)
add_executable(flux-deck-draw-assets ${FLUXDECK_ASSET_SOURCES} ${PROJECT_SOURCE_DIR}/src/editor/Layout.cpp
                                      ${PROJECT_SOURCE_DIR}/src/editor/widgets/BoxArt.cpp)
target_include_directories(flux-deck-draw-assets PRIVATE ${PROJECT_SOURCE_DIR}/tools ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(flux-deck-draw-assets PRIVATE
  JUCE_STANDALONE_APPLICATION=1
  JUCE_WEB_BROWSER=0
  JUCE_USE_CURL=0
  JUCE_DISPLAY_SPLASH_SCREEN=0
  JUCE_REPORT_APP_USAGE=0)
target_link_libraries(flux-deck-draw-assets PRIVATE
  juce::juce_core juce::juce_events juce::juce_graphics juce::juce_recommended_config_flags fluxdeck_warnings)
if(TARGET juce::pkgconfig_JUCE_IMG_LINUX_DEPS)
  target_link_libraries(flux-deck-draw-assets PRIVATE juce::pkgconfig_JUCE_IMG_LINUX_DEPS)
endif()
set_source_files_properties(${FLUXDECK_ASSET_SOURCES} PROPERTIES COMPILE_OPTIONS "-Wall;-Wextra;-Wno-unused-parameter")

set(FLUXDECK_FONT_FILE "${PROJECT_SOURCE_DIR}/resource/fonts/Acumin-Light.ttf")
add_custom_command(
  OUTPUT "${FLUXDECK_DRAWN_STAMP}"
  COMMAND flux-deck-draw-assets "${FLUXDECK_DRAWN_ASSETS}" "${FLUXDECK_FONT_FILE}"
  COMMAND "${CMAKE_COMMAND}" -E touch "${FLUXDECK_DRAWN_STAMP}"
  DEPENDS flux-deck-draw-assets "${FLUXDECK_FONT_FILE}"
  COMMENT "Drawing the interface images"
  VERBATIM)
add_custom_target(fluxdeck_drawn_assets DEPENDS "${FLUXDECK_DRAWN_STAMP}")
fluxdeck_add_resource_root("${FLUXDECK_DRAWN_ASSETS}" DEPENDS "${FLUXDECK_DRAWN_STAMP}" fluxdeck_drawn_assets)
