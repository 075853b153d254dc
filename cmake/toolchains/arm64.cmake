# 64-bit ARM: unsigned char.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(card_triple aarch64-linux-gnu)
set(card_emulator qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
