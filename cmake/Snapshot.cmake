# flux-deck-snapshot: pictures of the window, drawn in-process with no display.
file(GLOB FLUXDECK_SNAPSHOT_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/snapshot/*.cpp)
add_executable(flux-deck-snapshot ${FLUXDECK_SNAPSHOT_SOURCES})
fluxdeck_use_shared_code(flux-deck-snapshot)
target_include_directories(flux-deck-snapshot PRIVATE ${PROJECT_SOURCE_DIR}/tools)
target_link_libraries(flux-deck-snapshot PRIVATE fluxdeck_warnings)
