// SPDX-License-Identifier: MIT
#include "program/Session.h"

#include <unistd.h>

#include <cstdlib>

namespace PosUtil {

Session::Session() : fOut(STDOUT_FILENO) { SetColours(ColourMode::kAuto); }

void Session::SetColours(ColourMode mode) {
  fOutStyle = Style::For(STDOUT_FILENO, mode);
  fErrorStyle = Style::For(STDERR_FILENO, mode);
}

Library& Session::TheLibrary() {
  if (!fLibrary) fLibrary.emplace(fLibraryPath, fTracePath);
  return *fLibrary;
}

void Session::ComplainPlainly(const std::string& text) {
  PutMessage(fErrorStyle.Message(text, fErrorStyle.fError, Style::Lines::kFirst));
}

void Session::PutMessage(const std::string& text) {
  if (fRedirection) return fRedirection(text);
  fProgress.Erase();
  const std::string lines = text + '\n';
  // An error is ignored: standard error is where it would be reported.
  static_cast<void>(!::write(STDERR_FILENO, lines.data(), lines.size()));
}

void Session::ReportLosses(Losses& losses) {
  const bool isError = fLoss == LossMode::kError;
  std::string text;
  for (const std::string& line : losses.TakeLines(isError ? "" : "warning: ")) {
    text += (text.empty() ? "" : "\n") + line;
  }
  if (text.empty()) return;
  if (isError) {
    throw LossFailure(text + "\nUse --loss=warn to accept this, --loss=keep to keep the values.");
  }
  PutMessage(fErrorStyle.Message(text, fErrorStyle.fWarning, Style::Lines::kAll));
}

void Session::CheckReports() {
  if (fLibrary) fLibrary->CheckReports("");
}

void Session::Finish() {
  if (!EndsAtOnce()) fKept.clear();  // its release may report something
  CheckReports();
  fOut.Finish();
}

void Session::EndProcess(ExitStatus status) {
  if (!EndsAtOnce()) return;
  fProgress.Erase();
  ::_exit(status);
}

// The memory of a process ends with it. To release a document value by value took up to a seventh
// of the time of a command, to unload the library and forget the options a tenth of the
// instructions of a start. A build with assertions does it all the same, so that its host and its
// sanitizers find what is not released.
bool Session::EndsAtOnce() const {
#ifdef NDEBUG
  return fTracePath.empty() && !std::getenv("KAPHOST_DEBUG");
#else
  return false;
#endif
}

}  // namespace PosUtil
