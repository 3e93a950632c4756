# The state-chunk fuzzer. Needs clang; it lives in the AddressSanitizer folder
# that tools/configure-sanitizer-build.sh sets up (tools/run-fuzz.sh uses it).
# The shared code gets the coverage hooks in that folder only.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  message(WARNING "FLUXDECK_FUZZ needs clang; the fuzzer is not built")
  return()
endif()

set(FLUXDECK_FUZZ_FLAGS -fsanitize=fuzzer-no-link,address -fno-omit-frame-pointer)
target_compile_options(FluxDeck PRIVATE ${FLUXDECK_FUZZ_FLAGS})
target_compile_options(fluxdeck_dsp PRIVATE ${FLUXDECK_FUZZ_FLAGS})

add_executable(fluxdeck_state_fuzzer ${PROJECT_SOURCE_DIR}/tests/fuzz/state_fuzzer.cpp)
fluxdeck_use_shared_code(fluxdeck_state_fuzzer)
target_compile_options(fluxdeck_state_fuzzer PRIVATE -fsanitize=fuzzer,address -fno-omit-frame-pointer)
target_link_options(fluxdeck_state_fuzzer PRIVATE -fsanitize=fuzzer,address)
