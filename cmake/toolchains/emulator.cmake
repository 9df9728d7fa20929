# Programs of another processor run under an emulator, unless this machine's kernel runs them itself: it is asked
# to run `loader`, the dynamic loader that all of them start with. -DCMAKE_CROSSCOMPILING_EMULATOR=… overrules.
if(NOT DEFINED CMAKE_CROSSCOMPILING_EMULATOR)
  execute_process(COMMAND ${loader} --version RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
  if(NOT result EQUAL 0)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${emulator})
  endif()
endif()
