# Libraries from the distribution's packages, by name.
find_package(Threads REQUIRED)

# Compiled here, so that the sanitizers see it, and once: its headers alone take a
# compiler longer than most of our files.
add_library(nuvelta_logging STATIC ${CMAKE_CURRENT_LIST_DIR}/logging_library.cpp)
target_compile_definitions(nuvelta_logging PUBLIC SPDLOG_FMT_EXTERNAL SPDLOG_COMPILED_LIB
  # Nobody uses the one that writes to the console.
  SPDLOG_DISABLE_DEFAULT_LOGGER)
target_link_libraries(nuvelta_logging PUBLIC Threads::Threads PRIVATE nuvelta_flags)
add_library(nuvelta_json INTERFACE)

if(CMAKE_CROSSCOMPILING)
  # The header-only libraries of the host serve here too; they are reached through
  # links, because its include folder as a whole must stay out of a cross build.
  set(nuvelta_headers ${CMAKE_BINARY_DIR}/headers)
  file(MAKE_DIRECTORY ${nuvelta_headers})
  foreach(library spdlog fmt nlohmann)
    file(REAL_PATH /usr/include/${library} folder)
    if(NOT IS_DIRECTORY ${folder})
      message(FATAL_ERROR "the headers of ${library} are missing")
    endif()
    file(CREATE_LINK ${folder} ${nuvelta_headers}/${library} SYMBOLIC)
  endforeach()
  target_include_directories(nuvelta_logging SYSTEM PUBLIC ${nuvelta_headers})
  target_include_directories(nuvelta_json SYSTEM INTERFACE ${nuvelta_headers})
else()
  find_package(fmt REQUIRED)
  find_package(spdlog REQUIRED)
  find_package(nlohmann_json REQUIRED)
  foreach(library spdlog::spdlog_header_only fmt::fmt-header-only)
    get_target_property(folders ${library} INTERFACE_INCLUDE_DIRECTORIES)
    target_include_directories(nuvelta_logging SYSTEM PUBLIC ${folders})
  endforeach()
  target_link_libraries(nuvelta_json INTERFACE nlohmann_json::nlohmann_json)
  if(NOT WIN32)
    find_package(CLI11 REQUIRED)
  endif()
  if(NUVELTA_TESTS)
    find_package(GTest REQUIRED)
  endif()
  if(NUVELTA_BENCH)
    find_package(benchmark REQUIRED)
  endif()
endif()
