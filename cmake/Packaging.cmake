# Installing where Linux hosts look for plug-ins, and the Debian package.
#
#   cmake --install build --prefix /usr          system-wide: /usr/lib/vst3, /usr/lib/lv2,
#                                                 /usr/bin, the desktop entry
#   cmake --install build --component user-plugins   the two bundles into ~/.vst3 and ~/.lv2
#   cmake --build build --target package          build/flux-deck_1.0.0_amd64.deb

get_target_property(FLUXDECK_VST3_BUNDLE FluxDeck_VST3 JUCE_PLUGIN_ARTEFACT_FILE)
get_target_property(FLUXDECK_LV2_BUNDLE FluxDeck_LV2 JUCE_PLUGIN_ARTEFACT_FILE)

# The bundles are folders; the trailing slash-less DIRECTORY form keeps their names.
foreach(bundle_and_folder "${FLUXDECK_VST3_BUNDLE}|lib/vst3" "${FLUXDECK_LV2_BUNDLE}|lib/lv2")
  string(REPLACE "|" ";" pair "${bundle_and_folder}")
  list(GET pair 0 bundle)
  list(GET pair 1 folder)
  install(DIRECTORY "${bundle}" DESTINATION ${folder} COMPONENT plugins USE_SOURCE_PERMISSIONS)
endforeach()

# Per user: hosts read ~/.vst3 and ~/.lv2. The home folder is read at install time (a
# DESTINATION would take it as relative to the prefix), and the component stays out of
# a full install and of the package.
foreach(bundle_and_folder "${FLUXDECK_VST3_BUNDLE}|.vst3" "${FLUXDECK_LV2_BUNDLE}|.lv2")
  string(REPLACE "|" ";" pair "${bundle_and_folder}")
  list(GET pair 0 bundle)
  list(GET pair 1 folder)
  install(CODE "file(INSTALL \"${bundle}\" DESTINATION \"\$ENV{HOME}/${folder}\" USE_SOURCE_PERMISSIONS)"
          COMPONENT user-plugins EXCLUDE_FROM_ALL)
endforeach()

install(PROGRAMS "$<TARGET_FILE:FluxDeck_Standalone>" DESTINATION bin RENAME flux-deck COMPONENT programs)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/flux-deck.desktop DESTINATION share/applications COMPONENT programs)
if(TARGET flux-deck-render)
  install(TARGETS flux-deck-render RUNTIME DESTINATION bin COMPONENT programs)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${PROJECT_SOURCE_DIR}/resource/fonts/OFL.txt
        DESTINATION share/doc/flux-deck COMPONENT programs)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME flux-deck)
set(CPACK_PACKAGE_VENDOR OXA)
set(CPACK_PACKAGE_CONTACT "OXA <flux-deck@oxa.net>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Two-deck tape flanger (VST3, LV2, standalone)")
set(CPACK_PACKAGE_DESCRIPTION "Every channel runs through two simulated tape machines whose outputs comb
against each other. The package holds the VST3 and LV2 plug-ins, the standalone
application and flux-deck-render, which renders audio files through the plug-in.")
set(CPACK_PACKAGE_INSTALL_DIRECTORY flux-deck)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# JUCE opens the X11 libraries at run time for windows, so no linker sees them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libx11-6, libxext6, libxrandr2, libxinerama1, libxcursor1")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://oxa.net/plugins/flux-deck")
# Only what a full install holds: never the per-user component.
set(CPACK_COMPONENTS_ALL plugins programs)
set(CPACK_DEB_COMPONENT_INSTALL OFF)
set(CPACK_STRIP_FILES ON)
include(CPack)
