# The tools of mingw-w64 whose names begin with `mingw`. Those with POSIX threads have the C++ library's threads.
set(CMAKE_C_COMPILER ${mingw}-gcc-posix)
set(CMAKE_CXX_COMPILER ${mingw}-g++-posix)
set(CMAKE_RC_COMPILER ${mingw}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
# That of the machine would be found.
set(CMAKE_DISABLE_FIND_PACKAGE_GTest ON)
# Programs and libraries need nothing but the system, and are the same whenever they are linked.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--no-insert-timestamp")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -Wl,--no-insert-timestamp")
