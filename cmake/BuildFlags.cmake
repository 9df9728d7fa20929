# Two interface targets: what all code is compiled with, and what goes into the bundle besides.

add_library(project_flags INTERFACE)
target_compile_features(project_flags INTERFACE cxx_std_20)
target_include_directories(project_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(project_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wextra-semi -Wundef -Werror)
if(MEMORYBLOCKZOR_SANITIZE)
  target_compile_options(project_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(project_flags INTERFACE -fsanitize=address,undefined)
endif()

# The bundle's own code: freestanding of the C++ runtime, and float arithmetic exactly as written
# (no fused multiply-adds, no extended precision) on every platform.
add_library(bundle_flags INTERFACE)
target_link_libraries(bundle_flags INTERFACE project_flags)
target_compile_options(bundle_flags INTERFACE
  -fPIC -fno-exceptions -fno-rtti -fvisibility=hidden -fvisibility-inlines-hidden
  -fno-threadsafe-statics -ffp-contract=off -fno-math-errno)
if(MEMORYBLOCKZOR_SANITIZE)
  target_compile_options(bundle_flags INTERFACE -fno-sanitize=vptr)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86|i.86|AMD64")
  # A host of that age keeps its stack at multiples of 4 bytes; vectors on it want multiples of 16.
  target_compile_options(bundle_flags INTERFACE -msse2 -mfpmath=sse -mstackrealign)
endif()
