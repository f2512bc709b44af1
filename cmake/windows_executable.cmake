# How code for Windows is hardened, linked and shipped.

# Every object that may end up in a shipped executable.
if(MSVC)
  target_compile_options(nuvelta_flags INTERFACE /GS /guard:cf)
else()
  target_compile_options(nuvelta_flags INTERFACE -fstack-protector-strong -fcf-protection=full
    -ffunction-sections -fdata-sections
    # No folder of the building machine in what is shipped.
    -ffile-prefix-map=${CMAKE_BINARY_DIR}/headers/= -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    # What the linker makes the PDB of, and guarded calls through pointers.
    target_compile_options(nuvelta_flags INTERFACE -gcodeview -mguard=cf)
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

# Links TARGET, whose entry is wmain, as it is shipped: hardened, reproducible,
# with the link map and the debug symbols in files beside it.
function(nuvelta_ship target)
  nuvelta_static(${target})
  if(MSVC)
    target_link_options(${target} PRIVATE /SUBSYSTEM:CONSOLE /ENTRY:wmainCRTStartup /guard:cf
      /CETCOMPAT
      /DEPENDENTLOADFLAG:0x800 /DYNAMICBASE /NXCOMPAT /HIGHENTROPYVA /MAP /DEBUG /OPT:REF /Brepro)
    return()
  endif()
  target_link_options(${target} PRIVATE -municode -mconsole
    -Wl,-Map,$<TARGET_FILE_DIR:${target}>/${target}.map)
  set_property(TARGET ${target} APPEND PROPERTY ADDITIONAL_CLEAN_FILES
    $<TARGET_FILE_DIR:${target}>/${target}.map)
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    target_link_libraries(${target} PRIVATE nuvelta_load_config)
    # The PDB holds the symbols; the executable itself carries none.
    target_link_options(${target} PRIVATE -Wl,--guard-cf -Wl,--no-guard-longjmp
      -Wl,--pdb,$<TARGET_FILE_DIR:${target}>/${target}.pdb
      # Its name alone goes into the executable, not the builder's folder.
      -Wl,-Xlink=-pdbaltpath:%_PDB% -Wl,-s)
  else()
    find_program(NUVELTA_OBJCOPY ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-objcopy REQUIRED)
    find_program(NUVELTA_STRIP ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-strip REQUIRED)
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND ${NUVELTA_OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}>
        $<TARGET_FILE_DIR:${target}>/${target}.debug
      COMMAND ${NUVELTA_STRIP} $<TARGET_FILE:${target}>
      COMMAND ${NUVELTA_OBJCOPY} --add-gnu-debuglink=$<TARGET_FILE_DIR:${target}>/${target}.debug
        $<TARGET_FILE:${target}>)
  endif()
endfunction()
