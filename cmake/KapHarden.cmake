# SPDX-License-Identifier: MIT

# KAP_HARDEN: builds everything with the hardening that Debian gives its packages: checked C library
# calls, guarded stacks, control-flow marks, addresses resolved at load time and then read-only,
# programs at random addresses. On in release builds; the sanitizers bring their own. The control-
# flow marks have no effect yet: the C library's own start-up files lack them.
set(harden_default OFF)
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT KAP_SANITIZE)
  set(harden_default ON)
endif()
option(KAP_HARDEN "Build with Debian's hardening flags" ${harden_default})

# With CMAKE_POSITION_INDEPENDENT_CODE, programs are linked as position independent too.
include(CheckPIESupported)
check_pie_supported()

if(KAP_HARDEN)
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
    -fstack-protector-strong -fstack-clash-protection -fcf-protection)
  add_link_options(-Wl,-z,relro,-z,now)
endif()
