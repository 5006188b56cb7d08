// SPDX-License-Identifier: MIT
#include <algorithm>
#include <vector>

#include "base/Printable.h"
#include "commands/Command.h"
#include "commands/changes/ChangedDocument.h"
#include "commands/declarations/LiteralArguments.h"
#include "commands/values/Slot.h"

namespace PosUtil {

namespace {

class RemoveCommand final : public Command {
 public:
  RemoveCommand() : Command(6, "remove", "Removes values from a document") {}

  void Declare(Options& options) override {
    fDocument.Declare(options);
    options.Arguments("PATH", fPaths, "The values, as in a.b[2].c or /a/b/2/c");
    options.Footer(
        "Writes the document without the values, in the format and layout that it has. Every\n"
        "PATH is that in the document as it was: removing [0] and [1] removes the first two. With\n"
        "--in-place, nothing else may be lost: --loss=error is the default then. Exit status 1 if\n"
        "a PATH leads to no value; nothing is written then.\n\n"
        "Examples:\n"
        "  posutil remove settings.json window.size title\n"
        "  posutil remove --in-place settings.txt /window/size/0");
  }

  void Prepare(std::vector<std::string>& arguments) const override {
    ChangedDocument::Prepare(arguments);
    HideBrackets(arguments);
  }

  ExitStatus Run(Session& session) override {
    fDocument.Begin(session);
    for (const std::string& path : fPaths) RequireWellFormed(Path(path));
    fDocument.Run(session, [&](KAP_T_MT::CPOSObject& document, const std::string& name) {
      RemoveFrom(document, name, session);
    });
    return kExitSuccess;
  }

 private:
  void RemoveFrom(KAP_T_MT::CPOSObject& document, const std::string& name, Session& session) const {
    std::vector<Slot> slots;
    std::string missing;
    for (const std::string& path : fPaths) {
      try {
        slots.emplace_back(document, Path(path), session.Loss());
        if (!slots.back().Exists()) throw PathError("");
      } catch (const PathError&) {
        missing += (missing.empty() ? "" : "\nposutil: ") + Printable(name) + ": no value at \"" +
                   Printable(path) + "\"";
      }
    }
    if (!missing.empty()) throw Failure(missing, kExitNegative);
    // From the last to the first, so that a removal moves none that comes after it.
    std::sort(slots.begin(), slots.end(),
              [](const Slot& a, const Slot& b) { return b.Steps() < a.Steps(); });
    const auto end = std::unique(slots.begin(), slots.end(), [](const Slot& a, const Slot& b) {
      return a.Steps() == b.Steps();
    });
    std::for_each(slots.begin(), end, [](Slot& slot) { slot.Remove(); });
    if (document.IsNull()) throw Failure(Printable(name) + ": nothing is left", kExitNegative);
  }

  ChangedDocument fDocument;
  std::vector<std::string> fPaths;
} gRemoveCommand;

}  // namespace

}  // namespace PosUtil
