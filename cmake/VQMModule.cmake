# vqm_add_module(NAME SOURCES source... [LIBRARIES library...] [DIRECTORY folder] [FILE_NAME name])
#
# A module library NAME.so in the folder given (default: modules/ of the build tree).
function(vqm_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DIRECTORY;FILE_NAME" "SOURCES;LIBRARIES")
  if(NOT arg_DIRECTORY)
    set(arg_DIRECTORY ${CMAKE_BINARY_DIR}/modules)
  endif()
  if(NOT arg_FILE_NAME)
    set(arg_FILE_NAME ${name})
  endif()
  add_library(${name} MODULE ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    OUTPUT_NAME ${arg_FILE_NAME}
    LIBRARY_OUTPUT_DIRECTORY ${arg_DIRECTORY})
endfunction()
