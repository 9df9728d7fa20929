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
endif()
# What tests spend their time in, besides: the sanitizers' build optimises nothing else, which halves its time.
add_library(busy_flags INTERFACE)
if(MEMORYBLOCKZOR_SANITIZE)
  target_compile_options(busy_flags INTERFACE -O1)
endif()
if(MEMORYBLOCKZOR_COVERAGE)
  target_compile_options(project_flags INTERFACE --coverage -fprofile-update=atomic -Og)
  target_link_options(project_flags INTERFACE --coverage)
endif()
if(MEMORYBLOCKZOR_FUZZ)
  # The host calls functions by types of its own.
  target_compile_options(project_flags INTERFACE -fsanitize=fuzzer-no-link -fno-sanitize=function)
endif()
if(WIN32)
  # Float functions are the library's: mingw-w64's headers define some themselves.
  target_compile_definitions(project_flags INTERFACE __CRT__NO_INLINE)
endif()
