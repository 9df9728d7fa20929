# How the bundle's code is compiled and how each platform links it.

# Freestanding of the C++ runtime, and float arithmetic exactly as written (no fused multiply-adds, no extended
# precision) on every platform.
add_library(bundle_flags INTERFACE)
target_link_libraries(bundle_flags INTERFACE project_flags)
target_compile_options(bundle_flags INTERFACE
  -fPIC -fno-exceptions -fno-rtti -fvisibility=hidden -fvisibility-inlines-hidden
  -fno-threadsafe-statics -ffp-contract=off -fno-math-errno)
if(WIN32)
  # The stack is kept at multiples of 16 bytes, and GCC does not raise that for wider vectors: no move of a vector may
  # rely on more.
  target_compile_options(bundle_flags INTERFACE -Wa,-muse-unaligned-vector-move)
endif()
if(MEMORYBLOCKZOR_SANITIZE)
  target_compile_options(bundle_flags INTERFACE -fno-sanitize=vptr)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86|i.86|AMD64")
  # A host of that age keeps its stack at multiples of 4 bytes; vectors on it want multiples of 16.
  target_compile_options(bundle_flags INTERFACE -msse2 -mfpmath=sse -mstackrealign)
endif()

# ELF with the GNU tools: only the entry point is visible, everything is bound at load time, and nothing but libc
# and libm is needed. Without start files and the C++ runtime there is nothing to run at load time and nothing to
# unwind.
function(link_elf_bundle target)
  set(exports ${PROJECT_SOURCE_DIR}/plugin/registration/exports.map)
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports})
  target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/kernels/linux/system_math.cpp)
  target_link_options(${target} PRIVATE
    -Wl,--version-script=${exports} -Wl,--exclude-libs,ALL -Wl,-z,relro,-z,now,-z,noexecstack -Wl,--gc-sections)
  if(MEMORYBLOCKZOR_SANITIZE OR MEMORYBLOCKZOR_COVERAGE)
    target_link_libraries(${target} PRIVATE m)
  else()
    target_link_options(${target} PRIVATE -nostdlib -Wl,--no-undefined)
    target_link_libraries(${target} PRIVATE m c gcc)
  endif()
endfunction()

# PE with mingw-w64: the same. Every Windows has this C library, and what GCC's code calls besides is linked into the
# bundle.
function(link_pe_bundle target)
  set(exports ${PROJECT_SOURCE_DIR}/plugin/registration/exports.map)
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports})
  target_link_options(${target} PRIVATE
    -nostdlib -Wl,--entry=0 -Wl,--version-script=${exports} -Wl,--gc-sections
    -Wl,--dynamicbase -Wl,--nxcompat)
  target_link_libraries(${target} PRIVATE msvcrt gcc)
endfunction()

# add_bundle(NAME SOURCES … LIBRARIES …): the file that the host loads, beside the programs.
function(add_bundle target)
  cmake_parse_arguments(PARSE_ARGV 1 bundle "" "" "SOURCES;LIBRARIES")
  add_library(${target} MODULE ${bundle_SOURCES})
  target_link_libraries(${target} PRIVATE bundle_flags ${bundle_LIBRARIES})
  set_target_properties(${target} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    link_elf_bundle(${target})
  elseif(MINGW)
    link_pe_bundle(${target})
  else()
    message(FATAL_ERROR "cmake/Bundle.cmake does not know how ${CMAKE_SYSTEM_NAME} links the bundle.")
  endif()
endfunction()
