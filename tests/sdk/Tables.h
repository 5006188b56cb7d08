// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

// The tables of all interfaces as lines of text, for the list of those that were ever published.

// A line for each method, interface by interface and in slot order:
//
//   KAPStringInterface 0 NewStringAtom KAPNewStringAtomProc KAPStringAtom*(const char*)
//
// The types are written out from the declarations, without the aliases, so that they do not depend
// on the compiler.
std::vector<std::string> DeclaredTables();

// What has changed: a description of each published line whose slot is gone or has other
// names or another type now. Lines that are declared but not published are additions, and fine.
std::vector<std::string> BrokenPromises(const std::vector<std::string>& published,
                                        const std::vector<std::string>& declared);

// The lines of a file; none when it cannot be read.
std::vector<std::string> ReadLines(const std::string& path);

// Adds what is declared to the published tables in the file, and returns what has changed. If
// anything has, or the file cannot be read, it stays as it is.
std::vector<std::string> AddToPublished(const std::string& path,
                                        const std::vector<std::string>& declared);
