find_package(benchmark REQUIRED)

file(GLOB FLUXDECK_DSP_BENCH_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/bench/dsp/*.cpp)
if(FLUXDECK_DSP_BENCH_SOURCES)
  add_executable(fluxdeck_dsp_bench ${FLUXDECK_DSP_BENCH_SOURCES})
  target_link_libraries(fluxdeck_dsp_bench PRIVATE fluxdeck_dsp fluxdeck_warnings benchmark::benchmark benchmark::benchmark_main)
endif()

file(GLOB FLUXDECK_BENCH_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/bench/*.cpp)
if(FLUXDECK_BENCH_SOURCES)
  add_executable(fluxdeck_bench ${FLUXDECK_BENCH_SOURCES})
  fluxdeck_use_shared_code(fluxdeck_bench)
  target_link_libraries(fluxdeck_bench PRIVATE fluxdeck_warnings benchmark::benchmark)
endif()

# The performance report: whole plug-in and decks alone on programme material, per
# stage, and memory per instance (README, "Performance").
add_executable(fluxdeck_perf ${PROJECT_SOURCE_DIR}/bench/perf/FluxDeckPerf.cpp)
fluxdeck_use_shared_code(fluxdeck_perf)
target_link_libraries(fluxdeck_perf PRIVATE fluxdeck_warnings)
