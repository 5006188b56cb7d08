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
  // Where even that cannot be written there is nobody to tell.
  static_cast<void>(!::write(STDERR_FILENO, lines.data(), lines.size()));
}

void Session::Finish() {
  if (fLibrary) fLibrary->CheckReports("");
  fOut.Finish();
}

}  // namespace PosUtil
