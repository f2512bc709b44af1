# Libraries from the distribution's packages, by name.
find_package(Threads REQUIRED)
find_package(fmt REQUIRED)
find_package(spdlog REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(CLI11 REQUIRED)
if(NUVELTA_TESTS)
  find_package(GTest REQUIRED)
endif()
if(NUVELTA_BENCH)
  find_package(benchmark REQUIRED)
endif()

# Header-only, so that the sanitizers see them too.
add_library(nuvelta_logging INTERFACE)
target_link_libraries(nuvelta_logging INTERFACE spdlog::spdlog_header_only fmt::fmt-header-only
  Threads::Threads)
