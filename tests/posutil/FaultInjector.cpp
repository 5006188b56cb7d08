// SPDX-License-Identifier: MIT
// Preloaded into posutil, makes calls of the C library fail or kills the process at one of them.
// The environment variable KAP_FAULT holds
//
//   CALL FIRST COUNT ACTION
//
// where COUNT calls, starting with number FIRST, take ACTION: an error number to fail with, the
// negative number of a signal to get before the call, "kill" for SIGKILL, or "orphan" to kill the
// parent before the call. KAP_FIRED names a file to create when that happens. KAP_NAMED=1 makes the
// opening of unnamed files fail. The count starts at the call of signal() at the start of main:
// before that nothing can report a fault.

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#define KAP_EXPORT extern "C" __attribute__((visibility("default")))

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
}

namespace {

bool gIsCounting = false;
char gCall[20] = "";
long gFirst = 0;
long gCount = 0;
char gAction[20] = "";
long gCalls = 0;

void Fire() {
  if (const char* const file = std::getenv("KAP_FIRED")) {
    const long descriptor = ::syscall(SYS_openat, AT_FDCWD, file, O_CREAT | O_WRONLY, 0600);
    ::syscall(SYS_close, descriptor);
  }
}

// Returns whether the call is to fail; errno is set then.
bool Fails(const char* call) {
  if (!gIsCounting || std::strcmp(call, gCall) != 0) return false;
  ++gCalls;
  if (gCalls < gFirst || gCalls - gFirst >= gCount) return false;
  Fire();
  if (std::strcmp(gAction, "kill") == 0) {
    ::kill(::getpid(), SIGKILL);
  } else if (std::strcmp(gAction, "orphan") == 0) {
    ::kill(::getppid(), SIGKILL);
  } else if (gAction[0] == '-') {
    ::kill(::getpid(), -std::atoi(gAction));
  } else {
    errno = std::atoi(gAction);
    return true;
  }
  return false;
}

}  // namespace

KAP_EXPORT sighandler_t signal(int number, sighandler_t handler) noexcept {
  const char* const fault = std::getenv("KAP_FAULT");
  if (fault && !gIsCounting) {
    gIsCounting = std::sscanf(fault, "%19s %ld %ld %19s", gCall, &gFirst, &gCount, gAction) == 4;
  }
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = static_cast<int>(SA_RESTART);
  struct sigaction before {};
  return ::sigaction(number, &action, &before) == 0 ? before.sa_handler : SIG_ERR;
}

KAP_EXPORT void* malloc(std::size_t size) noexcept {
  return Fails("malloc") ? nullptr : __libc_malloc(size);
}

KAP_EXPORT void* calloc(std::size_t count, std::size_t size) noexcept {
  return Fails("malloc") ? nullptr : __libc_calloc(count, size);
}

KAP_EXPORT void* realloc(void* block, std::size_t size) noexcept {
  return Fails("malloc") ? nullptr : __libc_realloc(block, size);
}

KAP_EXPORT ssize_t write(int file, const void* data, std::size_t size) {
  return Fails("write") ? -1 : ::syscall(SYS_write, file, data, size);
}

KAP_EXPORT int fsync(int file) {
  return Fails("fsync") ? -1 : static_cast<int>(::syscall(SYS_fsync, file));
}

KAP_EXPORT int fchmod(int file, mode_t mode) noexcept {
  return Fails("fchmod") ? -1 : static_cast<int>(::syscall(SYS_fchmod, file, mode));
}

KAP_EXPORT pid_t fork() noexcept {
  return Fails("fork") ? -1 : static_cast<pid_t>(::syscall(SYS_fork));
}

KAP_EXPORT int linkat(int from, const char* name, int to, const char* newName, int flags) noexcept {
  if (Fails("link")) return -1;
  return static_cast<int>(::syscall(SYS_linkat, from, name, to, newName, flags));
}

KAP_EXPORT int renameat(int from, const char* name, int to, const char* newName) noexcept {
  if (Fails("rename")) return -1;
  return static_cast<int>(::syscall(SYS_renameat, from, name, to, newName));
}

KAP_EXPORT int renameat2(int from, const char* name, int to, const char* newName,
                         unsigned flags) noexcept {
  if (Fails("renameat2")) return -1;
  return static_cast<int>(::syscall(SYS_renameat2, from, name, to, newName, flags));
}

KAP_EXPORT ssize_t fgetxattr(int file, const char* name, void* value, std::size_t size) noexcept {
  return Fails("fgetxattr") ? -1 : ::syscall(SYS_fgetxattr, file, name, value, size);
}

KAP_EXPORT ssize_t getrandom(void* data, std::size_t size, unsigned flags) noexcept {
  return Fails("getrandom") ? -1 : ::syscall(SYS_getrandom, data, size, flags);
}

KAP_EXPORT int openat(int folder, const char* name, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = va_arg(arguments, mode_t);
  va_end(arguments);
  if ((flags & O_TMPFILE) == O_TMPFILE && std::getenv("KAP_NAMED")) {
    errno = EOPNOTSUPP;
    return -1;
  }
  return Fails("open") ? -1 : static_cast<int>(::syscall(SYS_openat, folder, name, flags, mode));
}
