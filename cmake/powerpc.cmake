# Toolchain file: 32-bit big-endian PowerPC, to try the library where the byte order differs.
set(kelvofxds_triplet powerpc-linux-gnu)
set(kelvofxds_processor powerpc)
set(kelvofxds_emulator qemu-ppc)
set(kelvofxds_flags "-msecure-plt")
include(${CMAKE_CURRENT_LIST_DIR}/debianCross.cmake)
