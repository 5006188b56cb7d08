// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

extern "C" [[gnu::weak]] int __llvm_profile_write_file();

// Ends a forked process without the parent's exit procedures, as _exit does. In a build with
// coverage counters, what the process has executed counts: those procedures would have written it.
[[noreturn]] inline void LeaveProcess(int status) {
  if (__llvm_profile_write_file) __llvm_profile_write_file();
  ::_exit(status);
}
