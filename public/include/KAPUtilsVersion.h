// SPDX-License-Identifier: MIT
#pragma once

// The version of the library and of these headers: C and C++, preprocessor included. This is the
// one place that it comes from: the build, the packages and the stamps of the library read it here.
//
//   #if KAPUTILS_VERSION >= 0x10200     // the headers that this file is compiled with
//   if (library.Version() >= 0x10200)   // the library that a host has loaded (kaphost/Component.h)
//
// A host without kaphost looks up `int KAPUtilsGetVersion(void)` in the library with dlsym. A
// component asks the binder for the procedures that it needs instead of a version.
//
// docs/compatibility.md says what each part promises. In short: a later version with the same major
// number has all interfaces, methods and procedures of an earlier one.

// The parts of the version.
#define KAPUTILS_VERSION_MAJOR 1
#define KAPUTILS_VERSION_MINOR 1
#define KAPUTILS_VERSION_PATCH 1

// One number that grows from version to version, a byte for each part: 0x10101 is 1.1.1.
#define KAPUTILS_VERSION \
  (KAPUTILS_VERSION_MAJOR * 0x10000 + KAPUTILS_VERSION_MINOR * 0x100 + KAPUTILS_VERSION_PATCH)
