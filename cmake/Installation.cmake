# What `cmake --install` puts where. Components: runtime, dev, example.
include(CMakePackageConfigHelpers)

set(VQM_PRIVATE_LIBDIR ${CMAKE_INSTALL_LIBDIR}/vqmstartup) # what nobody links
set(VQM_DATADIR ${CMAKE_INSTALL_DATADIR}/vqmstartup)
set(VQM_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/VQMStartup)
set(VQM_PKGCONFIGDIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(VQM_INSTRUMENT_LIBDIR ${VQM_PRIVATE_LIBDIR}/instrument)
set(VQM_INSTRUMENT_DATADIR ${VQM_DATADIR}/instrument)

# vqm_way(VARIABLE FROM TO): the relative path between two folders of the installation.
function(vqm_way variable from to)
  cmake_path(ABSOLUTE_PATH from BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} NORMALIZE)
  cmake_path(ABSOLUTE_PATH to BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} NORMALIZE)
  cmake_path(RELATIVE_PATH to BASE_DIRECTORY ${from})
  set(${variable} ${to} PARENT_SCOPE)
endfunction()

# vqm_find_libraries(FOLDER LIBRARY_FOLDER TARGET...): targets installed in FOLDER find those of LIBRARY_FOLDER,
# wherever the prefix is. The loader needs no telling about the system's own library folder.
function(vqm_find_libraries folder library_folder)
  vqm_way(way ${folder} ${library_folder})
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND library_folder STREQUAL CMAKE_INSTALL_LIBDIR)
    set(rpath "")
  elseif(way STREQUAL ".")
    set(rpath "$ORIGIN")
  else()
    set(rpath "$ORIGIN/${way}")
  endif()
  set_target_properties(${ARGN} PROPERTIES INSTALL_RPATH "${rpath}")
endfunction()

# vqm_install_configured(TEMPLATE NAME FOLDER COMPONENT [PROGRAM] [VARIABLE FOLDER]...): a file with @VARIABLE@s,
# absolute paths that are known only when the prefix is, which can still be given with the command that installs.
function(vqm_install_configured template name folder component)
  cmake_parse_arguments(PARSE_ARGV 4 arg "PROGRAM" "" "")
  set(type $<IF:$<BOOL:${arg_PROGRAM}>,PROGRAM,FILE>)
  set(settings "")
  while(arg_UNPARSED_ARGUMENTS)
    list(POP_FRONT arg_UNPARSED_ARGUMENTS variable path)
    string(APPEND settings "
      set(${variable} [[${path}]])
      cmake_path(ABSOLUTE_PATH ${variable} BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\" NORMALIZE)")
  endwhile()
  set(configured ${CMAKE_BINARY_DIR}/installed/${name})
  install(CODE "${settings}
    set(folder [[${folder}]])
    cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
    configure_file([[${template}]] [[${configured}]] @ONLY)
    file(INSTALL [[${configured}]] DESTINATION \"\${folder}\" TYPE ${type})" COMPONENT ${component})
endfunction()

# Libraries and programs

set_target_properties(vqmplatform vqmstartup PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
vqm_find_libraries(${CMAKE_INSTALL_LIBDIR} ${CMAKE_INSTALL_LIBDIR} vqmplatform vqmstartup)
vqm_find_libraries(${VQM_PRIVATE_LIBDIR} ${CMAKE_INSTALL_LIBDIR} vqmlauncher)
vqm_find_libraries(${CMAKE_INSTALL_BINDIR} ${VQM_PRIVATE_LIBDIR} mainstartup)
install(TARGETS vqmlauncher LIBRARY DESTINATION ${VQM_PRIVATE_LIBDIR} COMPONENT runtime)
set(tools vqm-modinfo vqm-startup-analyze)
install(TARGETS mainstartup ${tools} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(TARGETS vqm-module-probe # the programs look for it beside their own folder
        RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/vqmstartup COMPONENT runtime)

# Headers, and what finds them and the libraries

# vqm_public_headers(TARGET SCOPE HEADER...): the same paths in the project and in the include folder.
function(vqm_public_headers target scope)
  list(TRANSFORM ARGN PREPEND ${CMAKE_SOURCE_DIR}/)
  target_sources(${target} ${scope} FILE_SET HEADERS BASE_DIRS ${CMAKE_SOURCE_DIR} FILES ${ARGN})
  target_compile_features(${target} INTERFACE cxx_std_20)
endfunction()

vqm_public_headers(vqm_contract INTERFACE
  registry/VQMModule.h
  registry/VQMModuleC.h
  registry/VQMModuleContract.h)
vqm_public_headers(vqmplatform PUBLIC
  platform/CUtilXmlEvntHdlr.h
  platform/Debug.h
  platform/ErrorManager.h
  platform/Export.h
  platform/HwAbstractionLayer.h
  platform/TraceSpan.h
  platform/VQMProgressBar.h
  platform/VQMProperties.h
  platform/VQMSharedLibrary.h
  platform/VQMThread.h
  platform/VQMUtility.h
  xmlconfig/CSearchTblPair.h
  xmlconfig/SMenuTree.h)
vqm_public_headers(vqmstartup PUBLIC
  registry/CPtrSearchTbl.h
  registry/VQMLoadedModuleInformation.h
  Startup/ESuStage.h
  Startup/ESwpStartupStep.h
  Startup/IcppAnnouncementWrapper.h
  Startup/VQMIntegrationStartup.h
  Startup/VQMMainStartupImplementation.h
  Startup/VQMMainStartupInterface.h
  Startup/Version.h
  xmlconfig/CSuXmlEvntHdlr.h
  xmlconfig/CXmlParseLanguages.h
  xmlconfig/CXmlParseMasterRegKeys.h
  xmlconfig/CXmlParseMenuTree.h
  gui/EGuiEventType.h
  gui/MainWidget.h
  gui/VQMGuiAlertEventType.h
  gui/VQMMainGui.h
  gui/VQMStartupWindow.h)

foreach(name contract platform startup)
  set(target vqm${name})
  set(export VQMStartupTargets)
  if(name STREQUAL "contract")
    set(target vqm_contract)
    set(export VQMContractTargets) # a set of its own, which needs no Qt
  endif()
  add_library(VQM::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  install(TARGETS ${target} EXPORT ${export}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vqmstartup COMPONENT dev)
endforeach()
foreach(export VQMContractTargets VQMStartupTargets)
  install(EXPORT ${export} NAMESPACE VQM:: DESTINATION ${VQM_CMAKEDIR} COMPONENT dev)
endforeach()

configure_package_config_file(cmake/VQMStartupConfig.cmake.in ${CMAKE_BINARY_DIR}/installed/VQMStartupConfig.cmake
  INSTALL_DESTINATION ${VQM_CMAKEDIR} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/installed/VQMStartupConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_BINARY_DIR}/installed/VQMStartupConfig.cmake
  ${CMAKE_BINARY_DIR}/installed/VQMStartupConfigVersion.cmake
  cmake/VQMModule.cmake
  cmake/VQMModule.map
  cmake/VQMModuleNote.c
  DESTINATION ${VQM_CMAKEDIR} COMPONENT dev)

vqm_way(VQM_PREFIX ${VQM_PKGCONFIGDIR} .)
foreach(name vqmstartup vqmstartup-contract)
  configure_file(cmake/${name}.pc.in ${CMAKE_BINARY_DIR}/installed/${name}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/installed/${name}.pc DESTINATION ${VQM_PKGCONFIGDIR} COMPONENT dev)
endforeach()
install(DIRECTORY examples/module-template examples/module-template-c COMPONENT dev
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/vqmstartup-dev/examples)

# Schema, manual pages, completions, unit file

install(FILES xmlconfig/configuration.rng DESTINATION ${VQM_DATADIR} COMPONENT runtime)
install(DIRECTORY ${CMAKE_BINARY_DIR}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT runtime OPTIONAL
        PATTERN vqm-instrument-example.1 EXCLUDE)
install(FILES ${CMAKE_BINARY_DIR}/man/man1/vqm-instrument-example.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT example OPTIONAL)
set(completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/mainstartup DESTINATION ${completions} COMPONENT runtime)
foreach(tool IN LISTS tools) # the same file, by the name that bash looks for
  file(CREATE_LINK mainstartup ${CMAKE_BINARY_DIR}/installed/${tool} SYMBOLIC)
  install(FILES ${CMAKE_BINARY_DIR}/installed/${tool} DESTINATION ${completions} COMPONENT runtime)
endforeach()
vqm_install_configured(${CMAKE_SOURCE_DIR}/launcher/mainstartup@.service.in mainstartup@.service
  lib/systemd/system runtime CMAKE_INSTALL_FULL_BINDIR ${CMAKE_INSTALL_BINDIR})

# The example instrument

vqm_find_libraries(${VQM_INSTRUMENT_LIBDIR} ${CMAKE_INSTALL_LIBDIR} ${VQM_INSTRUMENT_TARGETS})
install(TARGETS ${VQM_INSTRUMENT_TARGETS} LIBRARY DESTINATION ${VQM_INSTRUMENT_LIBDIR} COMPONENT example)
install(FILES examples/instrument/release_notes.txt DESTINATION ${VQM_INSTRUMENT_DATADIR} COMPONENT example)
install(DIRECTORY ${CMAKE_BINARY_DIR}/instrument/languages DESTINATION ${VQM_INSTRUMENT_DATADIR} COMPONENT example
        FILES_MATCHING PATTERN *.qm)
foreach(file instrument.xml instrument.ini)
  vqm_install_configured(${CMAKE_SOURCE_DIR}/examples/instrument/${file}.in ${file}
    ${VQM_INSTRUMENT_DATADIR} example
    INSTRUMENT_MODULES ${VQM_INSTRUMENT_LIBDIR}
    INSTRUMENT_LANGUAGES ${VQM_INSTRUMENT_DATADIR}/languages
    INSTRUMENT_RELEASE_NOTES ${VQM_INSTRUMENT_DATADIR}/release_notes.txt)
endforeach()
vqm_install_configured(${CMAKE_SOURCE_DIR}/examples/instrument/vqm-instrument-example.in vqm-instrument-example
  ${CMAKE_INSTALL_BINDIR} example PROGRAM
  CMAKE_INSTALL_FULL_BINDIR ${CMAKE_INSTALL_BINDIR}
  INSTRUMENT_FOLDER ${VQM_INSTRUMENT_DATADIR})
