#pragma once

// What this build is: texts set by the build, found in the library's file with `strings`. Each
// function returns a static, writable, zero-terminated text that lives as long as the library is
// loaded. Threads: any may call.

// The date of the sources as year-month-day, or "unknown".
char* KAPUtils_BuildDate();

// The version of the project, "1.1.1".
char* KAPUtils_BuildVersion();

// The commit, with "-modified" behind it if files differ from it, or "unknown".
char* KAPUtils_BuildID();

char* KAPUtils_CopyRight();
