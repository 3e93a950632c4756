# flux-deck-snapshot: pictures of the window, drawn in-process with no display.
add_executable(flux-deck-snapshot ${PROJECT_SOURCE_DIR}/tools/snapshot/main.cpp
               ${PROJECT_SOURCE_DIR}/tools/snapshot/MenuStates.cpp)
fluxdeck_use_shared_code(flux-deck-snapshot)
target_link_libraries(flux-deck-snapshot PRIVATE fluxdeck_warnings)
