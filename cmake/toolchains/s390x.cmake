# 64-bit and big-endian, as Debian has no other such processor: stands for big-endian cards.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(card_triple s390x-linux-gnu)
set(card_emulator qemu-s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
