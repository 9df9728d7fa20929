# The GoogleTest that is installed for the target; or Debian's sources of it, built as the tests are: sanitized, or for
# another processor.
if(NOT MEMORYBLOCKZOR_SANITIZE)
  find_package(GTest CONFIG)
endif()
if(NOT TARGET GTest::gtest AND EXISTS /usr/src/googletest/CMakeLists.txt)
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  set_target_properties(gtest gtest_main PROPERTIES COMPILE_WARNING_AS_ERROR OFF)
endif()
