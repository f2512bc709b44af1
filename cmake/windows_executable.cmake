# How code for Windows is hardened, linked and shipped.

# Every object that may end up in a shipped executable.
if(MSVC)
  target_compile_options(nuvelta_flags INTERFACE /GS /guard:cf)
else()
  target_compile_options(nuvelta_flags INTERFACE -fstack-protector-strong -fcf-protection=full
    -ffunction-sections -fdata-sections
    # No folder of the building machine in what is shipped, nor in its symbols.
    -ffile-prefix-map=${CMAKE_BINARY_DIR}/headers/= -ffile-prefix-map=/usr/include/=
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    # What the linker makes the PDB of.
    target_compile_options(nuvelta_flags INTERFACE -gcodeview -gno-codeview-command-line
      -ffile-compilation-dir=.)
    file(RELATIVE_PATH nuvelta_root ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR})
    string(REGEX REPLACE "/$" "" nuvelta_root "${nuvelta_root}")
    if(NUVELTA_CCACHE)
      # No folder gets into an object, so one checkout's serve another.
      list(INSERT CMAKE_CXX_COMPILER_LAUNCHER 1 CCACHE_NOHASHDIR=1)
    endif()
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_CURRENT_LIST_DIR}/relative_paths
      ${PROJECT_SOURCE_DIR} ${nuvelta_root} ${CMAKE_CXX_COMPILER_LAUNCHER})
  endif()
endif()

# Links TARGET without libraries that a plain Windows lacks.
function(nuvelta_static target)
  if(NOT MSVC)
    target_link_options(${target} PRIVATE -static -Wl,--gc-sections -Wl,--no-insert-timestamp
      -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va)
    # For the stack protector.
    target_link_libraries(${target} PRIVATE ssp_nonshared ssp)
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
      # GCC's driver adds it by itself.
      target_link_libraries(${target} PRIVATE pthread)
    endif()
  endif()
endfunction()

# Gives TARGET a manifest and a version resource. A build with the placeholder marker says
# so in the product's name, for it must not be taken for one that can be shipped.
function(nuvelta_resources target identity description)
  enable_language(RC)
  string(REPLACE "." "," version_numbers ${PROJECT_VERSION})
  set(product "Nuvelta Wireless AUTH Service HX2208")
  set(file_flags 0)
  set(special_build "")
  if(NUVELTA_FCC_MARKER STREQUAL NUVELTA_PLACEHOLDER_MARKER)
    string(APPEND product " (placeholder marker)")
    set(file_flags VS_FF_SPECIALBUILD)
    set(special_build "      VALUE \"SpecialBuild\", \"placeholder marker, which no firmware carries\"\n")
  endif()
  set(files ${CMAKE_CURRENT_BINARY_DIR}/${target})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/executable.manifest.in ${files}.manifest @ONLY)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/executable.rc.in ${files}.rc @ONLY)
  target_sources(${target} PRIVATE ${files}.rc)
  set_source_files_properties(${files}.rc PROPERTIES OBJECT_DEPENDS ${files}.manifest)
endfunction()

# Links TARGET as it is shipped: hardened, reproducible, with the link map and the debug
# symbols in files beside it. Its entry is wmain.
function(nuvelta_ship target)
  nuvelta_static(${target})
  if(MSVC)
    target_link_options(${target} PRIVATE /SUBSYSTEM:CONSOLE /ENTRY:wmainCRTStartup /guard:cf
      /CETCOMPAT /DEPENDENTLOADFLAG:0x800 /DYNAMICBASE /NXCOMPAT /HIGHENTROPYVA /MAP /DEBUG
      # Incremental linking would keep what nothing refers to.
      /OPT:REF /INCREMENTAL:NO /Brepro
      # The resources hold the one manifest.
      /MANIFEST:NO)
    return()
  endif()
  # Relative to the build folder, which the symbols would name otherwise.
  file(RELATIVE_PATH folder ${CMAKE_BINARY_DIR} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  target_link_options(${target} PRIVATE -municode -mconsole -Wl,-Map,${folder}/${target}.map)
  set(files ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.map)
  find_program(NUVELTA_LLVM_OBJCOPY llvm-objcopy-16 REQUIRED)
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    target_link_libraries(${target} PRIVATE nuvelta_load_config)
    list(APPEND files ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.pdb)
    target_link_options(${target} PRIVATE -Wl,--pdb,${folder}/${target}.pdb
      # Its name alone goes into the executable, not the builder's folder.
      -Wl,-Xlink=-pdbaltpath:%_PDB% -Wl,-Xlink=-pdbsourcepath:. -Wl,-s)
    # The runtime brings debug information of its own.
    set(commands COMMAND ${NUVELTA_LLVM_OBJCOPY} --strip-all $<TARGET_FILE:${target}>)
  else()
    set(symbols ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.debug)
    list(APPEND files ${symbols})
    # Not GNU's, which stamp the image with the time.
    set(commands
      COMMAND ${NUVELTA_LLVM_OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}> ${symbols}
      COMMAND ${NUVELTA_LLVM_OBJCOPY} --strip-all --add-gnu-debuglink=${symbols} $<TARGET_FILE:${target}>)
  endif()
  add_custom_command(TARGET ${target} POST_BUILD ${commands})
  set_property(TARGET ${target} APPEND PROPERTY ADDITIONAL_CLEAN_FILES ${files})
endfunction()
