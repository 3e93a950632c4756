# lilv's own tools read the built LV2 bundle's Turtle as every LV2 host does.
# Called by ctest with -DLV2_BUNDLE=<X.lv2> -DURI=<plug-in URI> -DLV2LS=... -DLV2INFO=...

if(NOT LV2LS OR NOT LV2INFO)
  message(FATAL_ERROR "lv2ls and lv2info are missing: run tools/setup-debian.sh (lilv-utils)")
endif()

# Only this build's folder: an installed copy elsewhere must not answer for it.
get_filename_component(folder "${LV2_BUNDLE}" DIRECTORY)
set(ENV{LV2_PATH} "${folder}")

execute_process(COMMAND "${LV2LS}" RESULT_VARIABLE code OUTPUT_VARIABLE listed ERROR_VARIABLE complaints)
if(NOT code EQUAL 0 OR NOT listed STREQUAL "${URI}\n" OR complaints MATCHES "error|warning")
  message(FATAL_ERROR "lv2ls must list exactly <${URI}> (${code}):\n${listed}\n${complaints}")
endif()

execute_process(COMMAND "${LV2INFO}" "${URI}" RESULT_VARIABLE code OUTPUT_VARIABLE info ERROR_VARIABLE complaints)
if(NOT code EQUAL 0 OR complaints MATCHES "error")
  message(FATAL_ERROR "lv2info cannot read the plug-in (${code}):\n${complaints}")
endif()

foreach(expected
    "Name: +Flux Deck\n"
    "Author: +OXA\n"
    "Author Homepage: +https://oxa.net\n"
    "Has latency: +yes"
    "Required Features:[^P]*options#options"
    "Extension Data:[^P]*state#interface"
    "Port 0:\n")
  if(NOT info MATCHES "${expected}")
    message(FATAL_ERROR "lv2info shows no '${expected}':\n${info}")
  endif()
endforeach()

# The 45 parameters reach hosts as patch parameters with the names and ranges JUCE gives them.
file(GLOB turtles "${LV2_BUNDLE}/*.ttl")
set(parameters 0)
foreach(turtle ${turtles})
  file(READ "${turtle}" text)
  string(REGEX MATCHALL "a lv2:Parameter ;\n\trdfs:label \"[^\"]+\" ;" found "${text}")
  list(LENGTH found count)
  math(EXPR parameters "${parameters} + ${count}")
  foreach(name "Magnetic Hardness" "Manual Flange" "Flange Mode" "Output Pad")
    if(text MATCHES "a lv2:Parameter ;\n\trdfs:label \"${name}\"")
      set(seen_${name} TRUE)
    endif()
  endforeach()
endforeach()
if(parameters LESS 45)
  message(FATAL_ERROR "the Turtle describes ${parameters} parameters, not 45")
endif()
foreach(name "Magnetic Hardness" "Manual Flange" "Flange Mode" "Output Pad")
  if(NOT seen_${name})
    message(FATAL_ERROR "no parameter labelled \"${name}\" in the Turtle")
  endif()
endforeach()
