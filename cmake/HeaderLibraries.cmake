# Libraries that are headers only, and so the same for every processor and system. They come from this machine, each in
# a folder of its own: the other headers beside them are those of this machine's own system.
function(add_header_library name folder)
  find_path(${name}_parent ${folder} REQUIRED NO_CMAKE_FIND_ROOT_PATH PATHS /usr/include /usr/local/include)
  mark_as_advanced(${name}_parent)
  set(own ${PROJECT_BINARY_DIR}/headers/${name})
  file(MAKE_DIRECTORY ${own})
  file(CREATE_LINK ${${name}_parent}/${folder} ${own}/${folder} SYMBOLIC COPY_ON_ERROR)
  add_library(${name} INTERFACE)
  target_include_directories(${name} SYSTEM INTERFACE ${own})
endfunction()

if(MEMORYBLOCKZOR_MINIHOST)
  add_header_library(cli11 CLI)
  add_header_library(stb stb)
endif()
