# RISC-V 64 under Linux, by Debian's cross compiler, which brings the libraries along.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR riscv64)
set(CMAKE_LIBRARY_ARCHITECTURE riscv64-linux-gnu)
set(CMAKE_C_COMPILER riscv64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER riscv64-linux-gnu-g++)
# That of the machine would be found.
set(CMAKE_DISABLE_FIND_PACKAGE_GTest ON)

set(loader /lib/ld-linux-riscv64-lp64d.so.1)
set(emulator qemu-riscv64 -L /usr/riscv64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/emulator.cmake)
