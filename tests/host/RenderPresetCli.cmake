# Runs flux-deck-render with presets and checks its exit code and messages.
# Called by ctest with -DTOOL=<program> -DCASE=<name> -DWORK_DIR=<folder>.

file(MAKE_DIRECTORY "${WORK_DIR}")
set(out "${WORK_DIR}/${CASE}.wav")
file(REMOVE "${out}")

include(${CMAKE_CURRENT_LIST_DIR}/RenderChecks.cmake)

if(CASE STREQUAL "list-presets")
  run_tool(--list-presets)
  foreach(line "presets:\n  01 Classic/Classic Drive\n" "  06 Bass/Rhythm Shake\n" "tape presets:\n  00 Flat\n"
               "  11 VHS\n" "  18 Studio Vintage\n")
    if(NOT code EQUAL 0 OR NOT stdout MATCHES "${line}")
      message(FATAL_ERROR "missing '${line}' (${code}):\n${stdout}\n${stderr}")
    endif()
  endforeach()
elseif(CASE STREQUAL "presets")
  # A preset, then a tape preset, then --set on top: Mix shows the --set value.
  run_tool(-o "${out}" --seconds 0.3 --preset "Jet Tape" --tape-preset "06 Cassette Type I" --set "Mix=50%"
           --list-parameters)
  if(NOT code EQUAL 0 OR NOT EXISTS "${out}")
    message(FATAL_ERROR "render with presets failed (${code}):\n${stdout}\n${stderr}")
  endif()
  foreach(line "  Mix +0\\.5" "  Phase Invert +1" "  Apply Compander +1")
    if(NOT stdout MATCHES "${line}")
      message(FATAL_ERROR "missing '${line}':\n${stdout}")
    endif()
  endforeach()
elseif(CASE STREQUAL "bad-preset")
  run_tool(-o "${out}" --seconds 0.1 --preset "No Such Preset")
  expect_clean_error("error: no preset \"No Such Preset\"")
elseif(CASE STREQUAL "not-a-preset")
  file(WRITE "${WORK_DIR}/broken.fxps" "<ModulePreset><FluxDeck Mix=")
  run_tool(-o "${out}" --seconds 0.1 --tape-preset "${WORK_DIR}/broken.fxps")
  expect_clean_error("error: .*broken.fxps is not an XML file")
else()
  message(FATAL_ERROR "unknown case ${CASE}")
endif()
