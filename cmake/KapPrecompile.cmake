# SPDX-License-Identifier: MIT

# kap_precompile(TARGET [HEADER...]): compiles the headers that most sources of a target include
# once, if KAP_PRECOMPILE is on. Off by default: a source that lacks an include would go unnoticed,
# and caches of compilations miss more often.
function(kap_precompile target)
  if(KAP_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE
      $<$<COMPILE_LANGUAGE:CXX>:<algorithm$<ANGLE-R>>
      $<$<COMPILE_LANGUAGE:CXX>:<functional$<ANGLE-R>>
      $<$<COMPILE_LANGUAGE:CXX>:<map$<ANGLE-R>>
      $<$<COMPILE_LANGUAGE:CXX>:<memory$<ANGLE-R>>
      $<$<COMPILE_LANGUAGE:CXX>:<string$<ANGLE-R>>
      $<$<COMPILE_LANGUAGE:CXX>:<vector$<ANGLE-R>> ${ARGN})
  endif()
endfunction()
