# vqm_add_module(NAME
#                TYPE base|loadable|loadable2|plugin|plugin-loadable|plugin-loadable2
#                [ID id] [PARTS Database|Scpi|Gui...] FAMILY mask VERSION major.minor.build [MODULE_NAME name]
#                SOURCES source... [LIBRARIES library...] [DIRECTORY folder] [FILE_NAME name] [UNCHECKED])
#
# A module library NAME.so, in C or C++, in the folder given (default: modules/ of the build tree).
#
# What the module is, is said here and nowhere else. Sources get it as VQM_MODULE_* (registry/VQMModule.h makes the
# description record and the entry points of it, registry/VQMModuleC.h the record), the file carries it in a note
# that tools read without loading it.
#
#   ID            for all but plug-ins, which get theirs at start-up
#   PARTS         for all but base modules
#   FAMILY        the instrument families served, in hexadecimal: 0x1 to 0xFFFFFFFF
#   MODULE_NAME   at most 31 characters; default: NAME
#   FILE_NAME     without ".so"; default: NAME
#   UNCHECKED     for tests of those who load modules: any number goes for TYPE, ID, PARTS, FAMILY, any length for
#                 the name
#
# The library exports its entry points alone, resolves its own symbols itself and all others when it is opened,
# names every library it needs, and leaves the process when it is closed.
function(vqm_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "UNCHECKED"
    "TYPE;ID;FAMILY;VERSION;MODULE_NAME;DIRECTORY;FILE_NAME" "PARTS;SOURCES;LIBRARIES")
  list(REMOVE_ITEM arg_KEYWORDS_MISSING_VALUES LIBRARIES)
  if(arg_UNPARSED_ARGUMENTS)
    vqm_refuse_module(${name} "not understood: ${arg_UNPARSED_ARGUMENTS}")
  elseif(arg_KEYWORDS_MISSING_VALUES)
    vqm_refuse_module(${name} "without a value: ${arg_KEYWORDS_MISSING_VALUES}")
  endif()
  foreach(argument TYPE FAMILY VERSION SOURCES)
    if(NOT DEFINED arg_${argument})
      vqm_refuse_module(${name} "${argument} is missing")
    endif()
  endforeach()
  set(defaults DIRECTORY ${CMAKE_BINARY_DIR}/modules FILE_NAME ${name} MODULE_NAME ${name})
  while(defaults)
    list(POP_FRONT defaults argument value)
    if(NOT DEFINED arg_${argument})
      set(arg_${argument} ${value})
    endif()
  endwhile()

  vqm_module_values(${name})
  set(support ${CMAKE_CURRENT_FUNCTION_LIST_DIR})
  get_property(languages GLOBAL PROPERTY ENABLED_LANGUAGES)
  set_source_files_properties(${support}/VQMModuleNote.c PROPERTIES COMPILE_OPTIONS -fno-sanitize=all)
  if(NOT C IN_LIST languages)
    set_source_files_properties(${support}/VQMModuleNote.c PROPERTIES LANGUAGE CXX)
  endif()

  add_library(${name} MODULE ${arg_SOURCES} ${support}/VQMModuleNote.c)
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    OUTPUT_NAME ${arg_FILE_NAME}
    LIBRARY_OUTPUT_DIRECTORY ${arg_DIRECTORY}
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    LINK_DEPENDS ${support}/VQMModule.map)
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} $<TARGET_NAME_IF_EXISTS:VQM::contract>)
  target_compile_definitions(${name} PRIVATE ${values})
  target_compile_options(${name} PRIVATE
    -ffunction-sections -fdata-sections
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>) # a unique symbol keeps a closed module mapped
  target_link_options(${name} PRIVATE
    -Wl,--version-script=${support}/VQMModule.map -Wl,-Bsymbolic -Wl,-z,now -Wl,--gc-sections)
  get_directory_property(options COMPILE_OPTIONS)
  string(TOUPPER "${CMAKE_BUILD_TYPE}" configuration)
  if(NOT "${options} ${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${configuration}}" MATCHES -fsanitize=)
    target_link_options(${name} PRIVATE -Wl,-z,defs) # a sanitizer's run-time library is in the program alone
  endif()
endfunction()

function(vqm_refuse_module name text)
  message(FATAL_ERROR "vqm_add_module(${name}): ${text}")
endfunction()

# Of vqm_add_module() only: checks its arguments arg_* and sets `values` to the definitions that tell them to sources.
function(vqm_module_values name)
  set(types base loadable loadable2 plugin plugin-loadable plugin-loadable2)
  set(type_values 0x1 0x10 0x20 0x40 0x80 0x100)
  set(parts Database Scpi Gui)
  set(part_values 0x1 0x2 0x4)
  set(number "(0|[1-9][0-9]*)")
  if(NOT arg_VERSION MATCHES "^${number}\\.${number}\\.${number}$")
    vqm_refuse_module(${name} "VERSION ${arg_VERSION} is not major.minor.build, such as 1.0.12")
  endif()
  set(version ${CMAKE_MATCH_1} ${CMAKE_MATCH_2} ${CMAKE_MATCH_3})
  if(NOT arg_MODULE_NAME MATCHES "^[A-Za-z0-9_]([A-Za-z0-9_ .+-]*[A-Za-z0-9_.+-])?$")
    vqm_refuse_module(${name}
      "MODULE_NAME ${arg_MODULE_NAME} has other characters than letters, digits, _ . + - and blanks")
  endif()

  if(arg_UNCHECKED)
    set(type ${arg_TYPE})
    set(mask "${arg_PARTS}")
  else()
    list(FIND types "${arg_TYPE}" at)
    if(at LESS 0)
      list(JOIN types ", " known)
      vqm_refuse_module(${name} "TYPE ${arg_TYPE} is none of ${known}")
    endif()
    list(GET type_values ${at} type)
    set(mask 0)
    foreach(part IN LISTS arg_PARTS)
      list(FIND parts "${part}" at)
      if(at LESS 0)
        list(JOIN parts ", " known)
        vqm_refuse_module(${name} "PARTS: ${part} is none of ${known}")
      endif()
      list(GET part_values ${at} value)
      math(EXPR mask "${mask} | ${value}" OUTPUT_FORMAT HEXADECIMAL)
    endforeach()
    vqm_check_module_values(${name})
  endif()
  if(NOT DEFINED arg_ID)
    set(arg_ID 0) # a plug-in's, of no meaning
  endif()
  if(mask STREQUAL "")
    set(mask 0)
  endif()
  list(POP_FRONT version major minor build)
  set(values
    VQM_MODULE_NAME="${arg_MODULE_NAME}"
    VQM_MODULE_MAJOR=${major} VQM_MODULE_MINOR=${minor} VQM_MODULE_BUILD=${build}
    VQM_MODULE_ID=${arg_ID} VQM_MODULE_TYPE=${type} VQM_MODULE_PARTS=${mask} VQM_MODULE_FAMILY=${arg_FAMILY}
    PARENT_SCOPE)
endfunction()

# What UNCHECKED leaves out.
function(vqm_check_module_values name)
  set(largest 2147483647)
  foreach(value IN LISTS version arg_ID)
    string(LENGTH "${value}" digits)
    if(digits GREATER 10 OR value GREATER largest)
      vqm_refuse_module(${name} "VERSION or ID: ${value} is more than ${largest}")
    endif()
  endforeach()
  if(arg_TYPE STREQUAL "plugin" AND DEFINED arg_ID)
    vqm_refuse_module(${name} "ID ${arg_ID} is given, but plug-ins get theirs at start-up")
  elseif(NOT arg_TYPE STREQUAL "plugin" AND NOT DEFINED arg_ID)
    vqm_refuse_module(${name} "ID is missing; TYPE ${arg_TYPE} needs one")
  elseif(DEFINED arg_ID AND NOT arg_ID MATCHES "^(0|[1-9][0-9]*)$")
    vqm_refuse_module(${name} "ID ${arg_ID} is not a number")
  elseif(arg_TYPE STREQUAL "base" AND arg_PARTS)
    vqm_refuse_module(${name} "PARTS are given, but base modules have none")
  elseif(NOT arg_TYPE STREQUAL "base" AND NOT arg_PARTS)
    vqm_refuse_module(${name} "PARTS are missing; without any, TYPE ${arg_TYPE} is never initialized")
  endif()
  string(LENGTH "${arg_FAMILY}" length)
  if(NOT arg_FAMILY MATCHES "^0x[0-9A-Fa-f]+$" OR arg_FAMILY MATCHES "^0x0+$" OR length GREATER 10)
    vqm_refuse_module(${name} "FAMILY ${arg_FAMILY} is not a mask from 0x1 to 0xFFFFFFFF")
  endif()
  string(LENGTH "${arg_MODULE_NAME}" length)
  if(length GREATER 31)
    vqm_refuse_module(${name} "MODULE_NAME ${arg_MODULE_NAME} has ${length} characters; 31 are kept")
  endif()
endfunction()
