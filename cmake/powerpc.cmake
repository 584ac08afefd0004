# Toolchain file: 32-bit big-endian PowerPC, to try the library where the byte order differs.
#
# clang does the compiling. Debian's PowerPC g++ would do as well, but it cannot be installed beside
# g++-multilib; its headers and libraries can, and ./dev powerpc installs those.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR powerpc)

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET powerpc-linux-gnu)
set(CMAKE_CXX_COMPILER_TARGET powerpc-linux-gnu)

# -B and -L come before the host's own 32-bit folder, where clang would find i386 start files.
set(CMAKE_C_FLAGS_INIT "-msecure-plt -B/usr/powerpc-linux-gnu/lib")
set(CMAKE_CXX_FLAGS_INIT "-msecure-plt -B/usr/powerpc-linux-gnu/lib")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-L/usr/powerpc-linux-gnu/lib")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-L/usr/powerpc-linux-gnu/lib")

set(CMAKE_FIND_ROOT_PATH /usr/powerpc-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-ppc -L /usr/powerpc-linux-gnu)
