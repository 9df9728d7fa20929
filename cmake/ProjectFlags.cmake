# What all code is compiled with.
add_library(project_flags INTERFACE)
target_compile_features(project_flags INTERFACE cxx_std_20)
target_include_directories(project_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(project_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wextra-semi -Wundef)
if(MEMORYBLOCKZOR_SANITIZE)
  target_compile_options(project_flags INTERFACE
    -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(project_flags INTERFACE -fsanitize=address,undefined)
  target_compile_definitions(project_flags INTERFACE SANITIZED)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # For the fuzzers, what is reached is counted; and the host calls functions by types of its own.
    target_compile_options(project_flags INTERFACE -fsanitize=fuzzer-no-link -fno-sanitize=function)
  endif()
endif()
if(MEMORYBLOCKZOR_COVERAGE)
  # The counters can be a file that processes share, so that one that crashes loses none; what they are made of is
  # not exported.
  target_compile_options(project_flags INTERFACE -fprofile-instr-generate -fcoverage-mapping
    -fprofile-update=atomic "SHELL:-mllvm -runtime-counter-relocation" -O1)
  target_link_options(project_flags INTERFACE -fprofile-instr-generate -Wl,--exclude-libs,ALL)
endif()
if(WIN32)
  # Float functions are the library's: mingw-w64's headers define some themselves.
  target_compile_definitions(project_flags INTERFACE __CRT__NO_INLINE)
endif()
