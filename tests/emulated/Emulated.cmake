# The kernels' tests, fewer rounds of them, on processors that this machine is not, each with the level that it must
# choose: an instruction of a higher level is one too many there.
find_program(QEMU_X86_64 qemu-x86_64 REQUIRED)
set_target_properties(kernels_static_tests PROPERTIES EXCLUDE_FROM_ALL OFF)
function(add_processor_test model level)
  add_test(NAME emulated.${model}
    COMMAND ${QEMU_X86_64} -cpu ${model} $<TARGET_FILE:kernels_static_tests> --gtest_brief=1)
  set_tests_properties(emulated.${model} PROPERTIES ENVIRONMENT "SWEEP_EVERY=20;EXPECTED_LEVEL=${level}" TIMEOUT 600)
endfunction()
add_processor_test(qemu64 sse2)
add_processor_test(Opteron_G3 sse2)
add_processor_test(Nehalem sse4)
add_processor_test(Haswell avx2)
add_test(NAME emulated.features
  COMMAND ${CMAKE_CURRENT_LIST_DIR}/features.sh ${QEMU_X86_64} $<TARGET_FILE:kernels_static_tests>)

# With the float functions of musl in place of this C library's.
find_library(MUSL libc.a PATHS /usr/lib/x86_64-linux-musl /usr/lib/musl/lib NO_DEFAULT_PATH REQUIRED)
set(float_functions sinf cosf __sindf __cosdf __rem_pio2f __rem_pio2_large floor scalbn expf exp2f_data log log_data atan2f
  atanf __math_divzero __math_invalid __math_oflowf __math_uflowf __math_xflow __math_xflowf)
list(TRANSFORM float_functions APPEND .lo OUTPUT_VARIABLE members)
set(musl_floats ${CMAKE_CURRENT_BINARY_DIR}/musl_floats)
add_custom_command(OUTPUT ${musl_floats}/floats.a
  COMMAND ${CMAKE_COMMAND} -E make_directory ${musl_floats}
  COMMAND cd ${musl_floats} && ${CMAKE_AR} x ${MUSL} ${members}
  COMMAND cd ${musl_floats} && ${CMAKE_AR} qcs floats.a ${members})
add_executable(kernels_musl_tests $<TARGET_OBJECTS:kernels_tests> ${musl_floats}/floats.a)
target_link_libraries(kernels_musl_tests PRIVATE guarded kernels)
add_test(NAME musl.kernels COMMAND kernels_musl_tests --gtest_brief=1 --gtest_filter=*Polar*)
