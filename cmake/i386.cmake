# Toolchain file: 32-bit code from the g++ of an x86 machine (Debian: g++-multilib).
#
# CMAKE_SYSTEM_NAME stays unset on purpose. This is not cross-compiling: what is built runs here.
set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32")

# Where Debian keeps the 32-bit halves of its packages.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
