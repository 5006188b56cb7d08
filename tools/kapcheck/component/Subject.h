// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "component/TestFailure.h"
#include "kap/KAPTypes.h"

namespace KAPCheck {

// The component under test, loaded. Unlike KAPHost::Component it makes every call that it is told
// to make, also those out of turn.
class Subject {
 public:
  // Throws TestFailure when the library cannot be loaded or lacks an entry point.
  Subject(const std::string& path, const std::string& name);
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;
  // Unloads the library without terminating the component.
  ~Subject();

  // The entry points. Throw TestFailure when an exception leaves them.
  bool Initialize(KAPGetProcAddressProc getProcAddress) const;
  void Terminate() const;
  int Version() const;

  // An address in the code of the library.
  const void* Code() const { return reinterpret_cast<const void*>(fInitialize); }

  // Whether a library of this path is in memory.
  static bool IsInMemory(const std::string& path);

 private:
  template <class Proc>
  Proc* EntryPoint(const char* suffix) const;

  std::string fName;
  void* fLibrary;
  int (*fInitialize)(KAPGetProcAddressProc);
  void (*fTerminate)();
  int (*fGetVersion)();
};

}  // namespace KAPCheck
