find_program(SCDOC scdoc)
add_custom_target(man_pages ALL)

# vqm_add_man_page(NAME SECTION)
#
# The manual page man/man<SECTION>/NAME.SECTION of the build tree from NAME.SECTION.scd; nothing without scdoc.
function(vqm_add_man_page name section)
  if(NOT SCDOC)
    return()
  endif()
  set(source ${CMAKE_CURRENT_SOURCE_DIR}/${name}.${section}.scd)
  set(page ${CMAKE_BINARY_DIR}/man/man${section}/${name}.${section})
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/man/man${section})
  add_custom_command(OUTPUT ${page} DEPENDS ${source} VERBATIM
    COMMAND sh -c "exec \"$1\" <\"$2\" >\"$3\"" sh ${SCDOC} ${source} ${page})
  add_custom_target(man_page_${name}.${section} DEPENDS ${page})
  add_dependencies(man_pages man_page_${name}.${section})
endfunction()
