#pragma once

#include <optional>
#include <string>

#include "files/Output.h"
#include "program/Library.h"
#include "terminal/Progress.h"
#include "terminal/Style.h"

namespace PosUtil {

// What a command works with: the library, loaded when it is first asked for, the standard output
// and the progress shown meanwhile.
class Session {
 public:
  Session();

  // Where the library is; empty for its usual places. To be set before it is loaded.
  std::string& LibraryPath() { return fLibraryPath; }
  Library& TheLibrary();

  Output& Out() { return fOut; }
  Progress& TheProgress() { return fProgress; }
  const Style& OutStyle() const { return fOutStyle; }

  // Tells the user on standard error, as the program or as it is.
  void Complain(const std::string& text) { ComplainPlainly("posutil: " + text); }
  void ComplainPlainly(const std::string& text);

  // Makes sure that all is well after a command: nothing reported, nothing of the output lost.
  // Throws Failure.
  void Finish();

 private:
  std::string fLibraryPath;
  std::optional<Library> fLibrary;
  Progress fProgress;
  Output fOut;
  Style fOutStyle;
  Style fErrorStyle;
};

}  // namespace PosUtil
