# 32-bit ARM: size_t and long of 32 bits, unsigned char.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(card_triple arm-linux-gnueabihf)
set(card_emulator qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
