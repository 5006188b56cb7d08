// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "kap/KAPClient.h"
#include "kaphost/KAPHost.h"

namespace PosUtil {

// The message to the user about a report of the library. `about` is the name of the document, or
// empty.
std::string ReportText(const std::string& about, const std::string& report);

// Whether a trace could not be written to its end, which standard error has said.
bool IsTraceLost() noexcept;

// libKAPUtils.so, loaded into a host of its own, and the client runtime bound to that host.
// Lifetime: destroy every property object first.
class Library {
 public:
  // An empty path means the installed plug-in or, in a build, the one beside the program. Calls are
  // traced to the file `trace` unless it is empty. Throws Failure.
  Library(const std::string& path, const std::string& trace);
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  const std::string& Path() const { return fComponent.Path(); }
  int Version() const { return fComponent.Version(); }

  // The host of the library, for its accounting.
  KAPHost::Host& Host() { return fHost; }

  // The reports of the library since the previous call.
  std::vector<std::string> TakeReports() { return fHost.TakeReports(); }
  // Throws Failure with the texts of the reports since the previous call, if there are any. `about`
  // is that of ReportText.
  void CheckReports(const std::string& about);

 private:
  KAPHost::HostOptions Options(const std::string& trace);

  KAPHost::Host fHost;
  KAPHost::Component fComponent;
  KAP_T_MT::KAPClient fClient;
};

}  // namespace PosUtil
