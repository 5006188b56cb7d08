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

# The examples as sources, without the build file that only this project can use.
if(KAP_BUILD_HOST)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kaputils-dev COMPONENT development
    PATTERN CMakeLists.txt EXCLUDE)
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
  PATH_VARS kap_include_dir kap_plugin_dir kap_data_dir)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KAPUtilsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KAPUtilsConfig.cmake
  ${PROJECT_BINARY_DIR}/KAPUtilsConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The pkg-config modules find the prefix from their own place, and the folders from there: also
# folders that were configured as absolute paths.
file(RELATIVE_PATH kap_prefix_from_pc
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" kap_prefix_from_pc ${kap_prefix_from_pc})
foreach(place IN ITEMS LIBDIR INCLUDEDIR DATADIR)
  file(RELATIVE_PATH kap_pc_${place} ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_${place}})
endforeach()
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

# gdb loads the printers with the plug-in. It looks for them beside the plug-in, where they can be
# moved with it; below /usr, where nothing moves, at the path of the plug-in in gdb's own folder,
# whose scripts gdb trusts.
set(gdb_script ${CMAKE_SHARED_LIBRARY_PREFIX}KAPUtils${CMAKE_SHARED_LIBRARY_SUFFIX}-gdb.py)
set(gdb_script_dir ${kap_plugin_dir})
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(gdb_script_dir ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}/kaputils)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/tools/gdb/kaputils_gdb.py
  DESTINATION ${gdb_script_dir} RENAME ${gdb_script} COMPONENT development)

if(KAP_BUILD_TOOLS)
  install(TARGETS posutil kapcheck RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(TARGETS kapprobe LIBRARY DESTINATION ${kap_plugin_dir} COMPONENT tools)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/tools/kapcheck/include/ DESTINATION ${kap_include_dir}
    COMPONENT development)
  # Compressed without a time stamp: the same page makes the same file.
  set(checker_page ${PROJECT_BINARY_DIR}/kapcheck.1.gz)
  add_custom_command(OUTPUT ${checker_page}
    COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/tools/kapcheck.1 > ${checker_page}
    DEPENDS ${PROJECT_SOURCE_DIR}/tools/kapcheck.1 COMMENT "Compressing kapcheck.1")
  add_custom_target(kapcheck_manual ALL DEPENDS ${checker_page})
  install(FILES ${checker_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()

# The program prints its completions and its manual page. A program with a sanitizer does not run in
# every environment, and is not for installation.
if(KAP_BUILD_TOOLS AND NOT KAP_SANITIZE)
  set(made ${PROJECT_BINARY_DIR}/share)
  set(page ${made}/posutil.1.gz)
  file(MAKE_DIRECTORY ${made})
  # Compressed without a time stamp: the same page makes the same file.
  add_custom_command(OUTPUT ${made}/posutil.bash ${made}/_posutil ${made}/posutil.fish ${page}
    COMMAND posutil completion bash > ${made}/posutil.bash
    COMMAND posutil completion zsh > ${made}/_posutil
    COMMAND posutil completion fish > ${made}/posutil.fish
    COMMAND posutil manual > ${made}/posutil.1
    COMMAND gzip -9nc ${made}/posutil.1 > ${page}
    DEPENDS posutil COMMENT "Making the completions and the manual page of posutil" VERBATIM)
  add_custom_target(kap_manual ALL DEPENDS ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES ${made}/posutil.bash RENAME posutil
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  install(FILES ${made}/posutil.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)
  # Debian keeps the folder that others use for local files.
  set(zsh_functions site-functions)
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(zsh_functions vendor-completions)
  endif()
  install(FILES ${made}/_posutil DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_functions}
    COMPONENT tools)
endif()
