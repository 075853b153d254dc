# 32-bit ARM: size_t and long of 32 bits, unsigned char.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(card_triple arm-linux-gnueabihf)
set(card_emulator qemu-arm)
# Without it, g++ notes each call that passes a structure in another way than g++ 6 did.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
