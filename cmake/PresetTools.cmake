# flux-deck-presets: writes the factory preset files of resource/ from the
# table in tools/presets. Built only when asked for:
#   cmake --build build --target flux-deck-presets && build/flux-deck-presets resource
add_executable(flux-deck-presets EXCLUDE_FROM_ALL ${PROJECT_SOURCE_DIR}/tools/presets/MakeFactoryPresets.cpp)
fluxdeck_use_shared_code(flux-deck-presets)
target_link_libraries(flux-deck-presets PRIVATE fluxdeck_warnings)
