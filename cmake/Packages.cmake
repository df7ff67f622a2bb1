# The Debian packages: vqmstartup, vqmstartup-dev and vqmstartup-example; scripts/package builds them.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL runtime dev example)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_SET_DESTDIR ON) # the prefix is what files refer to, not where they are packed
set(CPACK_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/PackageDocs.cmake)
set(CPACK_VQM_PACKAGING ${CMAKE_SOURCE_DIR}/packaging)
set(CPACK_VQM_CHANGES ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
set(CPACK_VERBATIM_VARIABLES ON)

# Version, release and maintainer are those of the changelog's first entry.
file(STRINGS ${CMAKE_SOURCE_DIR}/packaging/changelog changelog REGEX "^(vqmstartup| --) ")
if(NOT changelog MATCHES "^vqmstartup .([0-9.]+)-([0-9]+).[^;]*;[^;]*; -- ([^>]*>)"
   OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "packaging/changelog: its first entry is not one of version ${PROJECT_VERSION}")
endif()
set(version ${CMAKE_MATCH_1}-${CMAKE_MATCH_2})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CMAKE_MATCH_3}")
set(CPACK_PACKAGE_NAME vqmstartup)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each has one of its own
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME vqmstartup)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS procps)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "fonts-dejavu-core, libsystemd0")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${CMAKE_SOURCE_DIR}/packaging/shlibs ${CMAKE_SOURCE_DIR}/packaging/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "start-up library of an instrument firmware
Brings an instrument up from its module libraries, stage by stage, and takes
it down again.

This package holds the libraries, the launcher mainstartup and the tools that
tell what module libraries are and what a start-up did.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME vqmstartup-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "vqmstartup (= ${version})")
# A module library needs no Qt, only what links the start-up library does.
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS "qt6-base-dev, qt6-5compat-dev")
set(CPACK_DEBIAN_DEV_DESCRIPTION "start-up library of an instrument firmware (development)
Brings an instrument up from its module libraries, stage by stage, and takes
it down again.

This package holds what module libraries and programs that use the library are
built with, for CMake and pkg-config.")

set(CPACK_DEBIAN_EXAMPLE_PACKAGE_NAME vqmstartup-example)
set(CPACK_DEBIAN_EXAMPLE_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_EXAMPLE_PACKAGE_DEPENDS "vqmstartup (= ${version}), libqt6sql6-sqlite")
set(CPACK_DEBIAN_EXAMPLE_DESCRIPTION "start-up library of an instrument firmware (example)
Brings an instrument up from its module libraries, stage by stage, and takes
it down again.

This package holds an example instrument, a signal generator made of module
libraries; the command vqm-instrument-example brings it up.")

include(CPack)
