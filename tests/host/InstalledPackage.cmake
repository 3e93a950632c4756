# Installs the build the three ways a Linux user does and loads what was installed.
# Called by ctest with -DBUILD_DIR=<build> -DWORK_DIR=<scratch> -DCPACK=<cpack>.

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "failed (${code}): ${ARGN}\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

function(expect_files root)
  foreach(path ${ARGN})
    if(NOT EXISTS "${root}/${path}")
      message(FATAL_ERROR "missing ${root}/${path}")
    endif()
  endforeach()
endfunction()

include(${CMAKE_CURRENT_LIST_DIR}/RenderChecks.cmake)

set(vst3 "Flux Deck.vst3/Contents/x86_64-linux/Flux Deck.so")
set(lv2 "Flux Deck.lv2/manifest.ttl;Flux Deck.lv2/dsp.ttl;Flux Deck.lv2/Flux Deck.so")

# System-wide, with a prefix.
run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${WORK_DIR}/system/usr")
set(system_files "lib/vst3/${vst3}" bin/flux-deck bin/flux-deck-render share/applications/flux-deck.desktop
                 share/doc/flux-deck/copyright)
foreach(file ${lv2})
  list(APPEND system_files "lib/lv2/${file}")
endforeach()
expect_files("${WORK_DIR}/system/usr" ${system_files})

# Per user: only the two bundles, into the folders hosts read in the home folder.
run(${CMAKE_COMMAND} -E env "HOME=${WORK_DIR}/home"
    ${CMAKE_COMMAND} --install "${BUILD_DIR}" --component user-plugins)
expect_files("${WORK_DIR}/home" ".vst3/${vst3}" ".lv2/Flux Deck.lv2/manifest.ttl")
file(GLOB_RECURSE home_files RELATIVE "${WORK_DIR}/home" "${WORK_DIR}/home/*")
foreach(file ${home_files})
  if(NOT file MATCHES "^\\.(vst3|lv2)/Flux Deck\\.(vst3|lv2)/")
    message(FATAL_ERROR "the per-user install put ${file} into the home folder")
  endif()
endforeach()

# The Debian package, unpacked into a scratch root.
run("${CPACK}" -G DEB -B "${WORK_DIR}/package" --config "${BUILD_DIR}/CPackConfig.cmake")
set(deb "${WORK_DIR}/package/flux-deck_1.0.0_amd64.deb")
expect_files("/" "${deb}")
run(dpkg-deb --field "${deb}" Package Version Architecture)
if(NOT out MATCHES "Package: flux-deck\nVersion: 1.0.0\nArchitecture: amd64")
  message(FATAL_ERROR "unexpected control fields:\n${out}")
endif()
run(dpkg-deb --contents "${deb}")
if(out MATCHES "\\./home|/\\.vst3|/\\.lv2")
  message(FATAL_ERROR "the package holds per-user files:\n${out}")
endif()
run(dpkg -x "${deb}" "${WORK_DIR}/root")
expect_files("${WORK_DIR}/root/usr" ${system_files})

# The installed render tool finds the installed VST3 beside it, and loads the installed LV2.
set(root "${WORK_DIR}/root/usr")
run("${root}/bin/flux-deck-render" -o "${WORK_DIR}/vst3.wav" --seconds 0.2 --set "Flange Mode=Manual")
if(NOT out MATCHES "\\(VST3, ${root}/lib/vst3/Flux Deck.vst3\\)")
  message(FATAL_ERROR "the installed tool did not load the installed VST3:\n${out}")
endif()
run("${root}/bin/flux-deck-render" -o "${WORK_DIR}/lv2.wav" --seconds 0.2 --set "Flange Mode=Manual"
    --bundle "${root}/lib/lv2/Flux Deck.lv2")
if(NOT out MATCHES "\\(LV2, ${root}/lib/lv2/Flux Deck.lv2\\)" OR NOT out MATCHES "latency: +2880 samples")
  message(FATAL_ERROR "the installed LV2 did not load:\n${out}")
endif()
expect_same_level("${WORK_DIR}/lv2.wav" "${WORK_DIR}/vst3.wav")
