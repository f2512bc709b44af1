# 64-bit Windows with Clang 16 and lld 16 on the mingw-w64 headers and the GCC
# runtime; debug information goes to a PDB.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(nuvelta_triple x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER clang++-16)
set(CMAKE_CXX_COMPILER_TARGET ${nuvelta_triple})
set(CMAKE_RC_COMPILER ${nuvelta_triple}-windres)
# CMake would otherwise pick the tools of the host's default binutils.
set(CMAKE_AR llvm-ar-16)
set(CMAKE_RANLIB llvm-ranlib-16)

# Clang does not know Debian's "-posix" folder of the GCC runtime.
set(nuvelta_gcc /usr/lib/gcc/${nuvelta_triple}/12-posix)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES
  ${nuvelta_gcc}/include/c++ ${nuvelta_gcc}/include/c++/${nuvelta_triple}
  ${nuvelta_gcc}/include/c++/backward /usr/${nuvelta_triple}/include)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld-16 -L${nuvelta_gcc}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-fuse-ld=lld-16 -L${nuvelta_gcc}")

set(CMAKE_FIND_ROOT_PATH /usr/${nuvelta_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
