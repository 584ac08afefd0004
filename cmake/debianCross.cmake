# For toolchain files of 32-bit machines whose Debian packages are installed beside those of this one.
#
# clang does the compiling. Debian's g++ for another machine would do as well, but it cannot be
# installed beside g++-multilib; its headers and libraries can, and ./dev armhf and ./dev powerpc
# install those. What includes this has set kelvofxds_triplet, kelvofxds_processor,
# kelvofxds_emulator and, for the compiler, kelvofxds_flags.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${kelvofxds_processor})
set(kelvofxds_root /usr/${kelvofxds_triplet})

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET ${kelvofxds_triplet})
set(CMAKE_CXX_COMPILER_TARGET ${kelvofxds_triplet})

# -B and -L come before the host's own 32-bit folder, where clang would find i386 start files.
set(CMAKE_C_FLAGS_INIT "${kelvofxds_flags} -B${kelvofxds_root}/lib")
set(CMAKE_CXX_FLAGS_INIT "${kelvofxds_flags} -B${kelvofxds_root}/lib")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-L${kelvofxds_root}/lib")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-L${kelvofxds_root}/lib")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-L${kelvofxds_root}/lib")

# Where Debian keeps what is installed for that machine.
set(CMAKE_LIBRARY_ARCHITECTURE ${kelvofxds_triplet})

set(CMAKE_FIND_ROOT_PATH ${kelvofxds_root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${kelvofxds_emulator} -L ${kelvofxds_root})
