# A small VST3 host (static library) and the render tool built on it.
#
# JUCE is compiled once, inside fluxdeck_host, with hosting switched on. Programs
# that use the library compile their own sources against the same definitions and
# include folders, which the library hands on as INTERFACE properties.

file(GLOB FLUXDECK_HOST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/host/*.cpp)
add_library(fluxdeck_host STATIC ${FLUXDECK_HOST_SOURCES})
target_include_directories(fluxdeck_host PRIVATE ${PROJECT_SOURCE_DIR}/tools)
target_compile_definitions(fluxdeck_host PRIVATE
  JUCE_PLUGINHOST_VST3=1
  JUCE_PLUGINHOST_LV2=1
  JUCE_STANDALONE_APPLICATION=1
  JUCE_WEB_BROWSER=0
  JUCE_USE_CURL=0
  JUCE_USE_FLAC=0
  JUCE_USE_OGGVORBIS=0
  JUCE_DISPLAY_SPLASH_SCREEN=0
  JUCE_VST3_CAN_REPLACE_VST2=0
  JUCE_REPORT_APP_USAGE=0
  JUCE_MODAL_LOOPS_PERMITTED=1)
target_link_libraries(fluxdeck_host
  PRIVATE
    juce::juce_core
    juce::juce_events
    juce::juce_audio_basics
    juce::juce_audio_formats
    juce::juce_audio_processors
    juce::juce_gui_basics
    juce::juce_recommended_config_flags)
# Debian's JUCE draws PNG and JPEG from the system; JUCE adds these only to its own targets.
if(TARGET juce::pkgconfig_JUCE_IMG_LINUX_DEPS)
  target_link_libraries(fluxdeck_host PRIVATE juce::pkgconfig_JUCE_IMG_LINUX_DEPS)
endif()
target_compile_definitions(fluxdeck_host INTERFACE
  $<TARGET_PROPERTY:fluxdeck_host,COMPILE_DEFINITIONS>)
target_include_directories(fluxdeck_host INTERFACE
  $<TARGET_PROPERTY:fluxdeck_host,INCLUDE_DIRECTORIES>)
set_source_files_properties(${FLUXDECK_HOST_SOURCES} PROPERTIES COMPILE_OPTIONS "-Wall;-Wextra;-Wno-unused-parameter")

# The module file inside the freshly built bundle; the tools climb from it to the bundle.
set(FLUXDECK_BUILT_VST3_MODULE "$<TARGET_FILE:FluxDeck_VST3>")

file(GLOB FLUXDECK_RENDER_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/render/*.cpp)
add_executable(flux-deck-render ${FLUXDECK_RENDER_SOURCES})
target_link_libraries(flux-deck-render PRIVATE fluxdeck_host fluxdeck_warnings)
target_compile_definitions(flux-deck-render PRIVATE
  FLUXDECK_BUILT_VST3_MODULE="${FLUXDECK_BUILT_VST3_MODULE}"
  FLUXDECK_RESOURCE_ARCHIVE="${FLUXDECK_ARCHIVE_FILE}")
add_dependencies(flux-deck-render FluxDeck_VST3)
