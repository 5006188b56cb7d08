#include "program/Session.h"

#include <unistd.h>

namespace PosUtil {

Session::Session()
    : fOut(STDOUT_FILENO),
      fOutStyle(Style::For(STDOUT_FILENO)),
      fErrorStyle(Style::For(STDERR_FILENO)) {}

Library& Session::TheLibrary() {
  if (!fLibrary) fLibrary.emplace(fLibraryPath);
  return *fLibrary;
}

void Session::ComplainPlainly(const std::string& text) {
  fProgress.Erase();
  std::string lines = fErrorStyle.fError + text;
  const std::size_t firstEnd = std::min(lines.find('\n'), lines.size());
  lines.insert(firstEnd, fErrorStyle.fPlain);
  lines += '\n';
  // An error is ignored: standard error is where it would be reported.
  static_cast<void>(!::write(STDERR_FILENO, lines.data(), lines.size()));
}

void Session::CheckReports() {
  if (fLibrary) fLibrary->CheckReports("");
}

void Session::Finish() {
  CheckReports();
  fOut.Finish();
}

}  // namespace PosUtil
