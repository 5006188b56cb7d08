#pragma once

#include <optional>
#include <string>

#include "files/Output.h"
#include "program/Library.h"
#include "terminal/Progress.h"
#include "terminal/Style.h"

namespace PosUtil {

// What every command uses: the library, which loads on first use, standard output and the progress
// bar.
class Session {
 public:
  Session();

  // The path of the library; empty means its usual places. Set it before the first TheLibrary.
  std::string& LibraryPath() { return fLibraryPath; }
  Library& TheLibrary();

  Output& Out() { return fOut; }
  Progress& TheProgress() { return fProgress; }
  const Style& OutStyle() const { return fOutStyle; }

  // Print to standard error, with "posutil: " before the text or without.
  void Complain(const std::string& text) { ComplainPlainly("posutil: " + text); }
  void ComplainPlainly(const std::string& text);

  // Throws Failure if the library has reported anything.
  void CheckReports();
  // Completes a command: writes the rest of the output. Throws Failure if output is lost or the
  // library has reported anything.
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
