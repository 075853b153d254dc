# 32-bit and big-endian. Debian has the compiler, but no libraries: for the plug-in only.
set(CMAKE_SYSTEM_PROCESSOR ppc)
set(card_triple powerpc-linux-gnu)
set(card_emulator qemu-ppc)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
