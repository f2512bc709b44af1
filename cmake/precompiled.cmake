# Headers that nearly every file includes, compiled once for all targets. Each file still
# names what it needs: the builds for Windows and the lint know nothing of this.
option(NUVELTA_PRECOMPILE "Precompile the headers of the standard library" OFF)

set(nuvelta_standard_headers
  <algorithm> <array> <atomic> <chrono> <cstdint> <cstring> <filesystem> <functional> <map>
  <memory> <mutex> <optional> <set> <span> <string> <string_view> <utility> <vector>)

# Sets `result` to the targets of a folder and of those below it.
function(nuvelta_targets_below folder result)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(below ${folders})
    nuvelta_targets_below(${below} more)
    list(APPEND targets ${more})
  endforeach()
  set(${result} ${targets} PARENT_SCOPE)
endfunction()

# To be called when all targets are there.
function(nuvelta_precompile)
  if(NOT NUVELTA_PRECOMPILE)
    return()
  endif()
  nuvelta_targets_below(${PROJECT_SOURCE_DIR} targets)
  file(CONFIGURE OUTPUT precompiled.cpp CONTENT "")
  add_library(nuvelta_precompiled OBJECT ${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp)
  target_link_libraries(nuvelta_precompiled PRIVATE nuvelta_flags)
  target_precompile_headers(nuvelta_precompiled PRIVATE ${nuvelta_standard_headers})
  if(TARGET GTest::gtest)
    add_library(nuvelta_precompiled_tests OBJECT ${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp)
    target_link_libraries(nuvelta_precompiled_tests PRIVATE nuvelta_flags GTest::gtest)
    target_precompile_headers(nuvelta_precompiled_tests PRIVATE ${nuvelta_standard_headers}
      <gtest/gtest.h>)
  endif()
  foreach(target ${targets})
    get_target_property(type ${target} TYPE)
    get_target_property(libraries ${target} LINK_LIBRARIES)
    if(target STREQUAL nuvelta_logging OR NOT type MATCHES "EXECUTABLE|STATIC_LIBRARY")
    elseif(libraries MATCHES GTest)
      target_precompile_headers(${target} REUSE_FROM nuvelta_precompiled_tests)
    else()
      target_precompile_headers(${target} REUSE_FROM nuvelta_precompiled)
    endif()
  endforeach()
endfunction()
