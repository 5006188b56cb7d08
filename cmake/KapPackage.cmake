# SPDX-License-Identifier: MIT
# The Debian packages, one for each component of the installation. scripts/package makes and checks
# them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kaputils)
set(CPACK_PACKAGE_VENDOR "the KAPUtils authors")
# Who maintains the packages: who makes them, as Debian's tools ask it. Without a
# name, the packages say so; a domain below .invalid never receives mail.
set(kap_maintainer "Unnamed maintainer <unnamed@kaputils.invalid>")
if(NOT "$ENV{DEBEMAIL}" STREQUAL "")
  set(kap_maintainer "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()
set(CPACK_PACKAGE_CONTACT "${kap_maintainer}")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL plugin development tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The date of the sources, so that the same sources make the same packages: of the commit, or of
# the list of changes where there is no repository.
set(date "$ENV{SOURCE_DATE_EPOCH}")
if(date STREQUAL "" AND EXISTS ${PROJECT_SOURCE_DIR}/.git)
  execute_process(COMMAND git -C ${PROJECT_SOURCE_DIR} log -1 --format=%ct
    OUTPUT_VARIABLE date ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
if(NOT date MATCHES "^[0-9]+$")
  file(TIMESTAMP ${PROJECT_SOURCE_DIR}/CHANGELOG.md date "%s" UTC)
endif()
execute_process(COMMAND date -u +%Y -d @${date} OUTPUT_VARIABLE kap_year
  OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND date -u -R -d @${date} OUTPUT_VARIABLE kap_date
  OUTPUT_STRIP_TRAILING_WHITESPACE)

# Each package has its own copyright and changelog, as Debian wants them; a notice has a year.
file(READ ${PROJECT_SOURCE_DIR}/LICENSE kap_licence)
string(REGEX REPLACE "^MIT License\n\n[^\n]*\n\n" "" kap_licence "${kap_licence}")
string(REGEX REPLACE "\n$" "" kap_licence "${kap_licence}")
string(REPLACE "\n\n" "\n.\n" kap_licence "${kap_licence}")
string(REPLACE "\n" "\n " kap_licence "${kap_licence}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/debian/copyright.in ${PROJECT_BINARY_DIR}/copyright
  @ONLY)
file(READ ${PROJECT_SOURCE_DIR}/cmake/debian/copyright-tools kap_third_party)
string(CONFIGURE "${kap_third_party}" kap_third_party @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/cmake/debian/copyright.in
  ${PROJECT_BINARY_DIR}/copyright-tools @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in ${PROJECT_BINARY_DIR}/changelog
  @ONLY)
execute_process(COMMAND gzip -9nf ${PROJECT_BINARY_DIR}/changelog)

function(kap_package component suffix section summary description)
  string(TOUPPER ${component} upper)
  set(name kaputils-${suffix})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
  set(copyright copyright)
  if(component STREQUAL "tools")
    set(copyright copyright-tools)
  endif()
  install(FILES ${PROJECT_BINARY_DIR}/${copyright} RENAME copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

kap_package(plugin plugin libs "property objects for applications made of components"
  "libKAPUtils.so gives the components of a program numbers, strings, arrays and
dictionaries that they pass to each other, with a text notation, documents and
schemas. A host program loads it at run time.")
kap_package(development dev libdevel "client runtime and reference host of KAPUtils"
  "Headers, static libraries and sources for writing components of an application
and hosts that load them, in C++ or C, and pretty-printers for gdb.")
kap_package(tools tools utils "print, convert and check documents of property objects"
  "posutil reads documents in text notation, JSON or TypeA, looks values up by
path, converts, changes and compares documents, and checks them against
schemas. kapcheck checks components, and hosts with the probe libkapprobe.so.")

install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/overrides-dev RENAME kaputils-dev
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT development EXCLUDE_FROM_ALL)

set(plugin "kaputils-plugin (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${plugin}, libstdc++-12-dev | libstdc++-dev")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${plugin}")
include(CPack)
