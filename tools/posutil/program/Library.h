#pragma once

#include <string>
#include <vector>

#include "kaphost/KAPHost.h"

namespace PosUtil {

// A report of the library as the user is told of it. `about` names the document concerned, if any.
std::string ReportText(const std::string& about, const std::string& report);

// libKAPUtils.so, loaded into a host of this program's own, and the client runtime bound to that host.
// Ownership: every property object must be gone before this is.
class Library {
 public:
  // With an empty path, the library is looked for beside the program: in ../lib, then in the same folder.
  // Throws Failure.
  explicit Library(const std::string& path);
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  const std::string& Path() const { return fComponent.Path(); }
  int Version() const { return fComponent.Version(); }

  // What the library has reported since this was last asked.
  std::vector<std::string> TakeReports() { return fHost.TakeReports(); }
  // Throws Failure, with their texts, when the library has reported anything since this was last asked. `about` as for
  // ReportText.
  void CheckReports(const std::string& about);

 private:
  // The client runtime's binding: made last, undone first.
  struct Binding {
    explicit Binding(KAPGetProcAddressProc getProcAddress);
    Binding(const Binding&) = delete;
    Binding& operator=(const Binding&) = delete;
    ~Binding();
  };

  KAPHost::Host fHost;
  KAPHost::Component fComponent;
  Binding fBinding;
};

}  // namespace PosUtil
