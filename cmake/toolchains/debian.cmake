# What the toolchain files share: Debian's cross compiler for card_triple. With CMAKE_SYSROOT, the
# libraries come from there and qemu-user (card_emulator) runs what is built.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${card_triple}-gcc)
set(CMAKE_CXX_COMPILER ${card_triple}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${card_triple})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

if(CMAKE_SYSROOT)
  set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
  set(ENV{PKG_CONFIG_LIBDIR}
      ${CMAKE_SYSROOT}/usr/lib/${card_triple}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
  find_program(CARD_EMULATOR NAMES ${card_emulator}-static ${card_emulator})
  if(CARD_EMULATOR)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${CARD_EMULATOR} -L ${CMAKE_SYSROOT})
  endif()
endif()
