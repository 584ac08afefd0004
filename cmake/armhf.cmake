# Toolchain file: 32-bit ARM with hardware floating point, what Debian calls armhf.
#
# clang does the compiling. Debian's ARM g++ would do as well, but it cannot be installed beside
# g++-multilib; its headers and libraries can, and ./dev armhf installs those.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET arm-linux-gnueabihf)
set(CMAKE_CXX_COMPILER_TARGET arm-linux-gnueabihf)

# The oldest machine that Debian's armhf runs on; it has no NEON. -B and -L come before the host's
# own 32-bit folder, where clang would find i386 start files.
set(kelvofxds_arm "-march=armv7-a -mfpu=vfpv3-d16 -B/usr/arm-linux-gnueabihf/lib")
set(CMAKE_C_FLAGS_INIT "${kelvofxds_arm}")
set(CMAKE_CXX_FLAGS_INIT "${kelvofxds_arm}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-L/usr/arm-linux-gnueabihf/lib")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-L/usr/arm-linux-gnueabihf/lib")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-L/usr/arm-linux-gnueabihf/lib")

# Where Debian keeps what is installed for this machine.
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/arm-linux-gnueabihf)
