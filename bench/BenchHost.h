// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include "KAP.h"
#include "POSDict.h"
#include "kaphost/KAPHost.h"

// The common part of all benchmark programs: main, a host with the library, and the client runtime
// bound to it. RegisterBenchmarks adds benchmarks named <case>/ours, <case>/<peer> and
// <case>/floor, followed by sizes. "ours" crosses the boundary like any component; "floor" makes
// only the host calls that the work cannot do without.
//
// A second thread sleeps in the background, because a real host has threads: reference counts and
// the C library's heap, ours and those of the peers, use locked instructions. The environment
// variable KAP_BENCH_SINGLE leaves that thread out.

namespace Bench {

using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::KAPAdopt;
using KAP_T_MT::KAPStringClient;
using KAP_T_MT::TKAPInterfaceClient;

using Reference = KAP_T_MT::KAPContainerBaseGeneric;  // owns a reference

using Objects = TKAPInterfaceClient<KAP_T_MT::POSObjectInterface>;
using Statics = TKAPInterfaceClient<KAP_T_MT::POSObjectStatics>;
using Numbers = TKAPInterfaceClient<KAP_T_MT::POSNumberInterface>;
using Strings = TKAPInterfaceClient<KAP_T_MT::POSStringInterface>;
using UnicodeStrings = TKAPInterfaceClient<KAP_T_MT::POSUnicodeStringInterface>;
using BinDatas = TKAPInterfaceClient<KAP_T_MT::POSBinDataInterface>;
using RawPointers = TKAPInterfaceClient<KAP_T_MT::POSRawPointerInterface>;
using Arrays = TKAPInterfaceClient<KAP_T_MT::POSArrayInterface>;
using Dicts = TKAPInterfaceClient<KAP_T_MT::POSDictInterface>;

// Each program defines it. main calls it after the host exists.
void RegisterBenchmarks();

// The procedures of the host, for floors.
struct HostCalls {
  explicit HostCalls(const KAPHost::Host& host);

  template <class Interface, KAP_T_MT::TKAPName Method>
  using Proc = typename Interface::template Proc<Method>;

  const Proc<KAP_T_MT::KAPMemoryInterface, "Alloc"> fAlloc;
  const Proc<KAP_T_MT::KAPMemoryInterface, "Realloc"> fRealloc;
  const Proc<KAP_T_MT::KAPMemoryInterface, "Free"> fFree;
  const Proc<KAP_T_MT::KAPStringInterface, "NewStringAtom"> fNewAtom;
  const Proc<KAP_T_MT::KAPStringInterface, "DeleteStringAtom"> fDeleteAtom;
  const Proc<KAP_T_MT::KAPContainerInterface, "NewFullContainer"> fNewContainer;
  const Proc<KAP_T_MT::KAPContainerInterface, "AddRef"> fAddRef;
  const Proc<KAP_T_MT::KAPContainerInterface, "Release"> fRelease;
  // The names of the library for its containers.
  const CKAPStringAtom fInstanceName{"POSObjectImpl"};
  const CKAPStringAtom fInterfaceName{"POSObjectInterface"};
};
const HostCalls& Host();

// Takes ownership of a new object. Ends the program if it is null.
Reference Made(KAPContainer* handle);

// Sets the number of items that all iterations processed.
inline void SetItems(benchmark::State& state, std::int64_t itemsPerIteration = 1) {
  state.SetItemsProcessed(state.iterations() * itemsPerIteration);
}

// Sets the largest acceptable ratio of our time to the time of this peer or floor.
inline void SetTarget(benchmark::State& state, double ratio) { state.counters["target"] = ratio; }

}  // namespace Bench
