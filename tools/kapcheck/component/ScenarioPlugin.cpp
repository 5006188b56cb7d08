// SPDX-License-Identifier: MIT
#include "component/ScenarioPlugin.h"

#include <dlfcn.h>

#include <algorithm>

#include "component/TestFailure.h"

namespace KAPCheck {

ScenarioPlugin::ScenarioPlugin(const std::string& path) {
  void* const library = Guarded("the constructors of the plug-in",
                                [&] { return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL); });
  if (!library) throw TestFailure(std::string("the plug-in cannot be loaded: ") + ::dlerror());
  fRun = reinterpret_cast<int (*)(KAPGetProcAddressProc)>(::dlsym(library, "KAPCheckScenario"));
  const auto declarations = reinterpret_cast<const DeclaredMethod* (*)(std::size_t*)>(
      ::dlsym(library, "KAPCheckDeclarations"));
  if (!declarations) return;
  std::size_t count = 0;
  const DeclaredMethod* const methods = declarations(&count);
  if (!methods || count == 0) throw TestFailure("the plug-in declares no method");
  fDeclarations = {methods, count};
}

bool ScenarioPlugin::MayThrow() const {
  return std::any_of(fDeclarations.begin(), fDeclarations.end(),
                     [](const DeclaredMethod& method) { return method.fThrows; });
}

bool ScenarioPlugin::Run(KAPGetProcAddressProc getProcAddress) const {
  return Guarded("the scenario", [&] { return fRun(getProcAddress) != 0; });
}

}  // namespace KAPCheck
