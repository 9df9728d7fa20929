# AArch64 under Linux, by Debian's cross compiler.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(loader /lib/ld-linux-aarch64.so.1)
set(emulator qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/emulator.cmake)
