# What a Debian package holds besides the files installed, and in the form wanted there: runs before packing.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(tree ${CPACK_TEMPORARY_DIRECTORY}/${component})
  set(docs ${tree}/usr/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  configure_file(${CPACK_VQM_PACKAGING}/copyright ${docs}/copyright COPYONLY)
  configure_file(${CPACK_VQM_PACKAGING}/changelog ${docs}/changelog.Debian COPYONLY)
  configure_file(${CPACK_VQM_CHANGES} ${docs}/changelog COPYONLY)
  file(GLOB pages ${tree}/usr/share/man/man*/*.[1-8])
  execute_process(COMMAND gzip -9n ${docs}/changelog.Debian ${docs}/changelog ${pages}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
