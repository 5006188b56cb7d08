// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kap/KAPHostInterfaces.h"
#include "kaphost/Component.h"
#include "kaphost/Debug.h"
#include "kaphost/Live.h"
#include "kaphost/Snapshot.h"
#include "kaphost/StreamCall.h"

// A host for components: it registers the interfaces of kap/KAPHostInterfaces.h, loads components,
// keeps their reports and accounts for what they hold. For tests it injects faults and logs the
// calls of streams.
//
//   KAPHost::Host host;
//   KAPHost::Component utils = host.Load("libKAPUtils.so");
//   host.FailCall(KAPHost::KAPFault::kAtom, 3);  // the third atom from now on cannot be made
//   ...
//   if (host.Fired()) ... host.TakeReports() ...
//   host.StopFaults();

namespace KAPHost {

using KAP_T_MT::KAPFault;

class HostState;

// Where the host takes blocks, container records and atoms from. See HostOptions::fMemory.
enum class HostMemory {
  // kPlain in a build with a sanitizer, else kPages.
  kAutomatic,
  // Small ones from pages of their thread, which scale with the number of threads. Threads also
  // take references to often used atoms in advance.
  kPages,
  // All from malloc, no reference in advance: memory checkers see each block, and each use of an
  // atom after its last release.
  kPlain,
};

// How a host is set up. A plain value; the defaults suit a program that loads components.
struct HostOptions {
  // Called with each message that a component reports, on the reporting thread. Must not throw. The
  // message is kept for Host::Reports all the same: a long-running host should call TakeReports
  // regularly.
  std::function<void(const std::string& message)> fOnReport;
  // Called when the host is destroyed while components still hold something of it. The default
  // writes the description to std::cerr. Must not throw.
  std::function<void(const Snapshot& leaked)> fOnLeak;
  // Whether the host reports misuse: calls that use a dead handle or one of another kind, host
  // memory written outside of its bytes or freed twice, two threads in calls whose thread tags
  // forbid it, a result place left unset, and both a result and an error. Each report names the
  // procedure, the component and where the thing was made and ended; with DebugOptions::fStacks,
  // with stacks.
  //
  // Without checks such a call is undefined behaviour. With checks, the host does not carry out a
  // call with a handle of another kind, and two threads may release one last reference at the same
  // time: the object is destroyed once. The second release is reported for an atom, and for another
  // object unless the first one is still destroying it.
  //
  // "A dead handle": of an atom, error, container or shared buffer. A result place is the first
  // argument of a procedure that returns an error, if it points to a number or a handle of at least
  // four bytes; the host writes into it before the call.
  //
  // Checks take time, and memory: the host keeps the records of the last 50 000 destroyed objects
  // and the last 16 MiB of freed blocks. kAutomatic means kPlain then.
  bool fChecks = false;
  // Where small things come from.
  HostMemory fMemory = HostMemory::kAutomatic;
  // Trace, stacks and leak list. KAPHOST_DEBUG adds to these and to fChecks.
  DebugOptions fDebug = {};
};

// The host's procedures are plain functions, so a process has one host at a time. A host made after
// another starts with empty accounts.
//
// Ownership: what components still hold when the host is destroyed is reported and stays theirs.
//   Procedures called without a host do no harm: requests fail, atoms and blocks may still be
//   released, releasing anything that a component's procedure would delete does nothing. Nor does
//   releasing a file's stream: what it has not written is lost unless a later host releases it.
// Threads: procedures and members may be called from any thread. No other call may run during
//   construction and destruction. A snapshot taken while other threads work may catch them halfway
//   through a call.
// Processes: the child of a fork may go on with the host, whatever other threads of the parent did
//   in strings, memory, containers and errors. Their memory is not reused in the child. What other
//   threads were counting at that moment may be counted wrong in the child's snapshots and leak
//   report, and an atom that they were taking or releasing may stay for ever. In a process with
//   threads, a fork writes the whole table of atoms, whose pages are then copied.
// Unloading: code that embeds the host, such as a plug-in, must stay loaded until the process ends:
//   the end of each thread that has used the host calls it.
// Errors: members that allocate may throw std::bad_alloc.
class [[nodiscard]] Host {
 public:
  // Throws std::logic_error when there is a host already, std::runtime_error when the trace or the
  // leak list that the options name cannot be written.
  explicit Host(HostOptions options = {});
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  ~Host();

  // ---- The registry ----

  // The callback for components. It returns null when there is no host.
  KAPGetProcAddressProc GetProcAddress() const;

  // The procedure registered under these names, or null.
  void* Find(const char* interfaceName, const char* methodName, const char* procName) const;

  // The same, typed by an interface's declaration:
  // host.Proc<KAP_T_MT::KAPStringInterface, "AddRef">().
  template <class Interface, KAP_T_MT::TKAPName Method>
  typename Interface::template Proc<Method> Proc() const {
    constexpr auto entry = Interface::kEntries[Interface::template kSlot<Method>];
    return reinterpret_cast<typename Interface::template Proc<Method>>(
        Find(Interface::kName, entry.fMethodName, entry.fProcName));
  }

  // Registers a procedure or replaces the one under these names, the host's own included. Later
  // look-ups find the replacement. False when a name or the procedure is null.
  bool Register(const char* interfaceName, const char* methodName, const char* procName,
                void* proc);
  // Registers a whole interface from its declaration, the procedures in slot order. What may be
  // registered is what KAPRegisterInterface takes. False when a procedure is null.
  template <class Interface, class... Procs>
  bool RegisterInterface(Procs... procs) {
    bool complete = false;
    if constexpr (Interface::template CheckProcs<Procs...>()) {
      complete = true;
      for (const auto& entry : Interface::Registration(procs...)) {
        complete &= Register(Interface::kName, entry.fMethodName, entry.fProcName, entry.fProc);
      }
    }
    return complete;
  }
  // Removes all procedures of an interface. If there were any, the unregister counter grows by one.
  void Unregister(const char* interfaceName);

  // ---- Components ----

  // Loads a component and initialises it. Throws LoadError.
  Component Load(const std::string& path, const std::string& name = "KAPUtils");

  // ---- Reports ----

  // The messages that components have reported and that were not taken yet.
  std::vector<std::string> Reports() const;
  // Returns the same and forgets them.
  std::vector<std::string> TakeReports();

  // ---- Accounting ----

  // What components hold now that they did not hold when the host was made.
  Snapshot TakeSnapshot() const;
  // A number for a snapshot of now, in a fraction of its time: 0 for an empty one, the same for
  // equal ones and, but for a coincidence, another one for others.
  std::uint64_t TakeDigest() const;

  // What components hold now, thing by thing, in the order of making; with `since`, only what was
  // made after the thing of that number. Empty unless checks, stacks or the leak list are on.
  //
  //   const unsigned long before = host.LastThing();
  //   ...
  //   for (const auto& thing : host.LiveThings(before)) std::cerr << thing;
  std::vector<LiveThing> LiveThings(unsigned long since = 0) const;
  // The number of the thing made last; 0 for none.
  unsigned long LastThing() const;

  // ---- Fault injection ----
  //
  // A failing call does nothing and returns what its contract says for failure: a null atom, error
  // or block, the core memory error, or false. Each kind of call has one rule; a later rule
  // replaces it. Setting a rule restarts the counting of calls.

  // Fails the nth call of a kind from now on; the next call is the first.
  void FailCall(KAPFault kind, unsigned long n);
  // Fails every call of a kind from the nth on.
  void FailFrom(KAPFault kind, unsigned long n);
  // Counts calls without failing any.
  void CountCalls();
  // Fails requests for blocks of more bytes.
  void FailBlocksAbove(std::size_t size);
  // Streams return at most this many bytes from one read; 0 counts as 1.
  void LimitReads(std::size_t size);
  // Look-ups of these procedures return null. Null names are ignored, here and below.
  void HideProcedure(const char* interfaceName, const char* methodName);
  void HideInterface(const char* interfaceName);
  // Fails a component's registration of such a procedure.
  void FailRegistration(const char* interfaceName, const char* methodName);
  // Ends all of the above.
  void StopFaults();

  // Whether any call has failed since a rule was last set.
  bool Fired() const;
  // The calls of a kind since a rule was last set, those that failed included. Calls are only
  // counted until StopFaults.
  unsigned long CallCount(KAPFault kind) const;

  // ---- Stream calls ----

  // Starts or stops logging the calls of all streams' methods. The calls that a client stream makes
  // are logged before the call that causes them.
  void LogStreamCalls(bool log = true);
  // Returns the logged calls, in the order in which they ended, and forgets them.
  std::vector<StreamCall> TakeStreamCalls();

 private:
  std::unique_ptr<HostState> fState;
};

}  // namespace KAPHost
