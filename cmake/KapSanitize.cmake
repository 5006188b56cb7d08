# SPDX-License-Identifier: MIT

# KAP_SANITIZE: the sanitizers of the whole build, "address;undefined" or "thread".
# kap_sanitizer_environment: the environment of the programs of such a build, as NAME=VALUE.
set(KAP_SANITIZE "" CACHE STRING "Sanitizers, as a list: address;undefined or thread")
set(kap_sanitizer_environment)

if(KAP_SANITIZE)
  list(JOIN KAP_SANITIZE "," names)
  # A fuzz target is run millions of times, so that more optimisation pays for its compilation.
  set(optimisation -O1)
  if("fuzzer-no-link" IN_LIST KAP_SANITIZE)
    set(optimisation -O2)
  endif()
  add_compile_options(-fsanitize=${names} -fno-sanitize-recover=all -fno-omit-frame-pointer
    ${optimisation} -g1)
  add_link_options(-fsanitize=${names})
  if("undefined" IN_LIST KAP_SANITIZE)
    add_compile_options(-fsanitize=float-cast-overflow)
  endif()
  # In instrumented code g++ does not see all initialisations.
  add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-maybe-uninitialized>)

  # An allocation that is too large must return null, as malloc does, not end the process.
  string(CONCAT asan_options "detect_leaks=1:detect_stack_use_after_return=1:"
    "strict_string_checks=1:allocator_may_return_null=1")
  set(kap_sanitizer_environment
    "ASAN_OPTIONS=${asan_options}"
    "LSAN_OPTIONS=print_suppressions=0:suppressions=${CMAKE_CURRENT_LIST_DIR}/lsan.supp"
    "UBSAN_OPTIONS=print_stacktrace=1"
    "TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:allocator_may_return_null=1")
endif()
