// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "base/Loss.h"
#include "files/Output.h"
#include "pos/POSObject.h"
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
  // The file to trace calls to; empty means none. Set it before the first TheLibrary.
  std::string& TracePath() { return fTracePath; }
  Library& TheLibrary();

  Output& Out() { return fOut; }
  Progress& TheProgress() { return fProgress; }
  const Style& OutStyle() const { return fOutStyle; }
  void SetColours(ColourMode mode);

  // What to do with a value that property objects cannot hold; set it before reading.
  LossMode& Loss() { return fLoss; }
  // Prints a warning for each kind of loss or, with LossMode::kError, throws Failure; nothing for
  // no loss. Forgets the losses.
  void ReportLosses(Losses& losses);

  // Called before a read that may wait for input; empty by default.
  std::function<void()>& Idle() { return fIdle; }

  // Print to standard error, with "posutil: " before the text or without.
  void Complain(const std::string& text) { ComplainPlainly("posutil: " + text); }
  void ComplainPlainly(const std::string& text);

  // Throws Failure if the library has reported anything.
  void CheckReports();
  // Keeps a document that a command no longer needs until EndProcess, which may skip releasing it.
  void KeepToEnd(KAP_T_MT::CPOSObject document) { fKept.push_back(std::move(document)); }
  // Completes a command: writes the rest of the output. Throws Failure if output is lost or the
  // library has reported anything.
  void Finish();
  // After Finish: ends the process at once, or returns if something watches what is released: a
  // trace, KAPHOST_DEBUG, a build with assertions.
  void EndProcess(ExitStatus status);

  // Prints lines to standard error as they are, without the last line end.
  void PutMessage(const std::string& text);

 private:
  friend class MessageRedirection;

  bool EndsAtOnce() const;

  std::string fLibraryPath;
  std::string fTracePath;
  std::optional<Library> fLibrary;
  std::vector<KAP_T_MT::CPOSObject> fKept;
  LossMode fLoss = LossMode::kWarn;
  std::function<void()> fIdle;
  std::function<void(const std::string&)> fRedirection;
  Progress fProgress;
  Output fOut;
  Style fOutStyle;
  Style fErrorStyle;
};

// While it exists, the messages of the session go to a procedure and not to standard error.
class MessageRedirection {
 public:
  MessageRedirection(Session& session, std::function<void(const std::string&)> to)
      : fSession(session) {
    fSession.fRedirection = std::move(to);
  }
  MessageRedirection(const MessageRedirection&) = delete;
  MessageRedirection& operator=(const MessageRedirection&) = delete;
  ~MessageRedirection() { fSession.fRedirection = nullptr; }

 private:
  Session& fSession;
};

}  // namespace PosUtil
