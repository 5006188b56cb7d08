# SPDX-License-Identifier: MIT
# kap_version: the version, as the public header states it.
set(kap_version_header ${CMAKE_CURRENT_LIST_DIR}/../public/include/KAPUtilsVersion.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${kap_version_header})
set(kap_version)
foreach(part MAJOR MINOR PATCH)
  file(STRINGS ${kap_version_header} line REGEX "^#define KAPUTILS_VERSION_${part} [0-9]+$")
  if(NOT line MATCHES "([0-9]+)$")
    message(FATAL_ERROR "${kap_version_header} does not define KAPUTILS_VERSION_${part}")
  endif()
  list(APPEND kap_version ${CMAKE_MATCH_1})
endforeach()
list(JOIN kap_version "." kap_version)
