// SPDX-License-Identifier: MIT
#include "component/ScenarioPlugin.h"

#include <dlfcn.h>

#include "base/Failure.h"
#include "component/TestFailure.h"

namespace KAPCheck {

ScenarioPlugin::ScenarioPlugin(const std::string& path) {
  void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) throw PosUtil::Failure(::dlerror());
  fRun = reinterpret_cast<int (*)(KAPGetProcAddressProc)>(::dlsym(library, "KAPCheckScenario"));
  if (!fRun) throw PosUtil::Failure(path + " does not export KAPCheckScenario");
  const auto declarations = reinterpret_cast<const DeclaredMethod* (*)(std::size_t*)>(
      ::dlsym(library, "KAPCheckDeclarations"));
  if (declarations) {
    std::size_t count = 0;
    const DeclaredMethod* const methods = declarations(&count);
    fDeclarations = {methods, count};
  }
}

bool ScenarioPlugin::Run(KAPGetProcAddressProc getProcAddress) const {
  return Guarded("the scenario", [&] { return fRun(getProcAddress) != 0; });
}

}  // namespace KAPCheck
