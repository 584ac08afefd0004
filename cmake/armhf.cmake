# Toolchain file: 32-bit ARM with hardware floating point, what Debian calls armhf.
set(kelvofxds_triplet arm-linux-gnueabihf)
set(kelvofxds_processor arm)
set(kelvofxds_emulator qemu-arm)
# The oldest machine that Debian's armhf runs on; it has no NEON.
set(kelvofxds_flags "-march=armv7-a -mfpu=vfpv3-d16")
include(${CMAKE_CURRENT_LIST_DIR}/debianCross.cmake)
