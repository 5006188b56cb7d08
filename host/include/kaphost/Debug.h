// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "kap/KAPTypes.h"
#include "kaphost/Declared.h"

namespace KAPHost {

// What a host shows of the calls between itself and its components. Everything is off by default;
// then the host hands out its procedures as they are, and releases read one word more. With
// `fTrace`, `fStacks`, `fLeaks` or HostOptions::fChecks, every look-up returns a procedure that
// observes the call first.
//
// The environment variable KAPHOST_DEBUG adds to what a program sets, see ParseDebugWords.
//
// The child of a fork may not use a host that observes calls if the parent has threads in them.
struct DebugOptions {
  // The file to write the calls to; "-" is standard error, empty means no trace. A name that ends
  // in ".json" gets trace events that Chrome and Perfetto open, any other a readable text. "%p" in
  // the name stands for the number of the process. The first host of a process empties the file,
  // later ones append to it. A child that was forked since goes on in a file of its own, "FILE.PID"
  // or "FILE.PID.json"; its calls are not traced if the file is standard error.
  std::string fTrace;
  // Called once, on any thread, when the trace or the leak list cannot be written to its end. The
  // default writes the message to std::cerr. Must not throw.
  std::function<void(const std::string& message)> fOnLost;
  // If not empty: only calls of these interfaces, as they are registered, are traced.
  std::vector<std::string> fInterfaces;
  // If not empty: only calls that these components make or receive are traced. "host" is the host;
  // a component has the name under which it was loaded, any other code that of its file.
  std::vector<std::string> fComponents;
  // Whether reports and leak reports show the stacks of the calls that they are about.
  bool fStacks = false;
  // The file for the list of what is still held when the host is destroyed; "-" is standard error,
  // empty means no list. The list names each thing, who holds it and who made it. An empty file
  // means that nothing is held. Further hosts and children of forks write as for `fTrace`.
  std::string fLeaks;

  // The interfaces of components that are observed as well. Those of the host always are. A call of
  // any other interface cannot be observed; the trace says so once for each procedure.
  std::vector<const DeclaredMethod*> fDeclared;
  // Returns a word for a container, such as "dictionary", or an empty string; then the trace shows
  // the signature, which is the argument (may be null). Must not throw. Called on any thread, also
  // while the component that made the container is inside a call of the host. Calls that it makes
  // are not traced.
  std::function<std::string(const char* signature, KAPContainer* container)> fKindOf;
};

// The words of KAPHOST_DEBUG, separated by commas, added to the options:
//
//   trace           trace=-
//   trace=FILE      fTrace
//   interface=NAME  one of fInterfaces; may be repeated
//   component=NAME  one of fComponents; may be repeated
//   stacks          fStacks
//   checks          HostOptions::fChecks, which becomes true in `checks`
//   leaks           leaks=-
//   leaks=FILE      fLeaks
//   help            prints this list to standard error
//
// Throws std::invalid_argument for any other word; the text names it and lists the words. A host
// prints that text to standard error and ignores the whole variable.
void ParseDebugWords(std::string_view words, DebugOptions& options, bool& checks);

}  // namespace KAPHost
