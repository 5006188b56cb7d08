# SPDX-License-Identifier: MIT
# Where things are installed, relative to the prefix:
#   kap_include_dir  the public headers
#   kap_plugin_dir   libKAPUtils.so: apart from the libraries, because no program links to it
#   kap_data_dir     the sources of the client runtime, for components that compile them
# kap_plugin_from_bin is the way from the programs to the plug-in. It makes posutil find the plug-in
# wherever the prefix is moved to.
include(GNUInstallDirs)
set(kap_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/kaputils)
set(kap_plugin_dir ${CMAKE_INSTALL_LIBDIR}/kaputils)
set(kap_data_dir ${CMAKE_INSTALL_DATADIR}/kaputils)
file(RELATIVE_PATH kap_plugin_from_bin
  ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/kaputils)
