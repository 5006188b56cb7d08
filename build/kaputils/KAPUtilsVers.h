// SPDX-License-Identifier: MIT
#pragma once

// The stamps of this build, which `strings` finds in the library file. Each function returns a
// static, writable, zero-terminated string that lives as long as the library is loaded. Nothing
// in the library reads them.
// Threads: any.

// The date of the sources as year-month-day, or "unknown".
char* KAPUtils_BuildDate();

// The version of the project, "1.1.1".
char* KAPUtils_BuildVersion();

// The commit, followed by "-modified" if files differ from it; or "unknown".
char* KAPUtils_BuildID();

// The copyright notice.
char* KAPUtils_CopyRight();
