# Libraries from the distribution's packages, by name.
find_package(Threads REQUIRED)

if(CMAKE_CROSSCOMPILING OR WIN32)
  # Header-only: the linker leaves out what nobody uses of inline functions alone.
  add_library(nuvelta_logging INTERFACE)
  set(logging_scope INTERFACE)
  target_compile_definitions(nuvelta_logging INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY=1)
else()
  # Compiled here, so that the sanitizers see it, and once: its headers alone take a
  # compiler longer than most of our files.
  add_library(nuvelta_logging STATIC ${CMAKE_CURRENT_LIST_DIR}/logging_library.cpp)
  set(logging_scope PUBLIC)
  target_compile_definitions(nuvelta_logging PUBLIC SPDLOG_FMT_EXTERNAL SPDLOG_COMPILED_LIB
    # Nobody uses the one that writes to the console.
    SPDLOG_DISABLE_DEFAULT_LOGGER)
  target_link_libraries(nuvelta_logging PRIVATE nuvelta_flags)
endif()
target_link_libraries(nuvelta_logging ${logging_scope} Threads::Threads)
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
  target_include_directories(nuvelta_logging SYSTEM INTERFACE ${nuvelta_headers})
  target_include_directories(nuvelta_json SYSTEM INTERFACE ${nuvelta_headers})
else()
  find_package(fmt REQUIRED)
  find_package(spdlog REQUIRED)
  find_package(nlohmann_json REQUIRED)
  foreach(library spdlog::spdlog_header_only fmt::fmt-header-only)
    get_target_property(folders ${library} INTERFACE_INCLUDE_DIRECTORIES)
    target_include_directories(nuvelta_logging SYSTEM ${logging_scope} ${folders})
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
