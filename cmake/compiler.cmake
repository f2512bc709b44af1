# Language level, warnings and sanitizers for every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(NUVELTA_CCACHE ccache)
if(NUVELTA_CCACHE)
  # What one checkout has compiled serves another.
  set(CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_ABSSTDERR=1)
  if(NUVELTA_PRECOMPILE)
    # Demanded where headers are precompiled.
    list(APPEND CMAKE_CXX_COMPILER_LAUNCHER CCACHE_SLOPPINESS=pch_defines,time_macros)
  endif()
  list(APPEND CMAKE_CXX_COMPILER_LAUNCHER ${NUVELTA_CCACHE})
endif()

set(NUVELTA_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=")

add_library(nuvelta_flags INTERFACE)
if(MSVC)
  target_compile_options(nuvelta_flags INTERFACE /W4 /WX /permissive- /utf-8 /EHsc
    /Zc:__cplusplus)
  # Standard functions that these tools would have replaced by their own.
  target_compile_definitions(nuvelta_flags INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    set(nuvelta_gcc_only
      # Paths and messages are cut to their fixed sizes on purpose.
      -Wno-format-truncation
      # GCC 12 sees uninitialised members in an engaged std::optional.
      -Wno-maybe-uninitialized)
  endif()
  target_compile_options(nuvelta_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror
    ${nuvelta_gcc_only})
endif()
if(NOT WIN32)
  # Messages and symbols name a file from the root of the checkout, wherever that is.
  file(RELATIVE_PATH nuvelta_root ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR}/)
  target_compile_options(nuvelta_flags INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
    -ffile-prefix-map=${nuvelta_root}= -fdebug-prefix-map=${CMAKE_BINARY_DIR}=.)
endif()
if(NUVELTA_PRECOMPILE)
  # The first for the compiler cache. With precompiled headers GCC 12 takes a string that
  # is put together for one that reaches out of itself; the other builds keep the warnings.
  target_compile_options(nuvelta_flags INTERFACE -fpch-preprocess -Wno-array-bounds -Wno-restrict
    -Wno-stringop-overflow)
endif()
if(NUVELTA_SANITIZE)
  target_compile_options(nuvelta_flags INTERFACE
    -fsanitize=${NUVELTA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
    # What only tests or reads a command line: its undefined behaviour is nobody's, and
    # to look for it doubles what it takes to compile.
    $<$<BOOL:$<TARGET_PROPERTY:NUVELTA_ONLY_USES>>:-fno-sanitize=undefined>)
  target_link_options(nuvelta_flags INTERFACE -fsanitize=${NUVELTA_SANITIZE})
endif()
