# SPDX-License-Identifier: MIT
# What is installed, in three components: plugin, development and tools. Each has a Debian package
# of its own (KapPackage.cmake). Nothing installed contains a path of the build: the prefix may be
# moved as a whole.
include(CMakePackageConfigHelpers)

set(targets kapclient KAPUtils)
if(KAP_BUILD_HOST)
  list(APPEND targets kaphost)
endif()
install(TARGETS ${targets} EXPORT KAPUtilsTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  LIBRARY DESTINATION ${kap_plugin_dir} COMPONENT plugin)

set(headers ${PROJECT_SOURCE_DIR}/public/include/)
install(DIRECTORY ${headers} DESTINATION ${kap_include_dir} COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN source EXCLUDE)
install(DIRECTORY ${headers}/source DESTINATION ${kap_data_dir} COMPONENT development)
if(KAP_BUILD_HOST)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/host/include/ DESTINATION ${kap_include_dir}
    COMPONENT development)
endif()

# Not in a Debian package: those have their own copyright.
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/THIRD-PARTY-NOTICES.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licences)

# The CMake package.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KAPUtils)
install(EXPORT KAPUtilsTargets NAMESPACE KAPUtils:: DESTINATION ${package_dir}
  COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/KAPUtilsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KAPUtilsConfig.cmake INSTALL_DESTINATION ${package_dir}
  PATH_VARS kap_include_dir kap_plugin_dir kap_data_dir NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KAPUtilsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KAPUtilsConfig.cmake
  ${PROJECT_BINARY_DIR}/KAPUtilsConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The pkg-config modules find the prefix from their own place.
file(RELATIVE_PATH kap_prefix_from_pc
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" kap_prefix_from_pc ${kap_prefix_from_pc})
set(modules kapclient)
if(KAP_BUILD_HOST)
  list(APPEND modules kaphost)
endif()
foreach(module IN LISTS modules)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${module}.pc.in
    ${PROJECT_BINARY_DIR}/${module}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${module}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# gdb loads the printers with the plug-in: it looks for them below its own folder, at the path of
# the plug-in. The prefix is the one of the installation, which may differ from the configured one.
set(kap_gdb_script KAPUtils${CMAKE_SHARED_LIBRARY_SUFFIX}-gdb.py)
install(FILES ${PROJECT_SOURCE_DIR}/tools/gdb/kaputils_gdb.py
  DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${CMAKE_INSTALL_PREFIX}/${kap_plugin_dir}
  RENAME ${CMAKE_SHARED_LIBRARY_PREFIX}${kap_gdb_script} COMPONENT development)

if(KAP_BUILD_TOOLS)
  install(TARGETS posutil kapcheck RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(TARGETS kapprobe LIBRARY DESTINATION ${kap_plugin_dir} COMPONENT tools)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/tools/kapcheck/include/ DESTINATION ${kap_include_dir}
    COMPONENT development)
  install(FILES ${PROJECT_SOURCE_DIR}/tools/completions/posutil.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME posutil
    COMPONENT tools)
  # Compressed without a time stamp: the same page makes the same file.
  set(pages)
  foreach(program posutil kapcheck)
    set(page ${PROJECT_BINARY_DIR}/${program}.1.gz)
    add_custom_command(OUTPUT ${page}
      COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/tools/${program}.1 > ${page}
      DEPENDS ${PROJECT_SOURCE_DIR}/tools/${program}.1 COMMENT "Compressing ${program}.1")
    list(APPEND pages ${page})
  endforeach()
  add_custom_target(kap_manual ALL DEPENDS ${pages})
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()
