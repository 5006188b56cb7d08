#pragma once

#include <benchmark/benchmark.h>

#include "KAP.h"
#include "POSDict.h"
#include "kaphost/KAPHost.h"

// What all benchmark programs share: main, one host into which the library is loaded, and the
// client runtime bound to it. Benchmarks are named <case>/ours, <case>/<peer> and <case>/floor,
// with sizes behind, and are added by RegisterBenchmarks. "ours" crosses the boundary as any
// component does; "floor" makes the host calls that the work cannot do without, and nothing else.
//
// The environment variable KAP_BENCH_THREADED, set to anything, has a second thread sleep in the
// background: reference counts, ours and the peers', are then updated by locked instructions.

namespace Bench {

using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::KAPAdopt;
using KAP_T_MT::KAPStringClient;
using KAP_T_MT::TKAPInterfaceClient;

using Reference = KAP_T_MT::KAPContainerBaseGeneric;  // owns one reference

using Objects = TKAPInterfaceClient<KAP_T_MT::POSObjectInterface>;
using Statics = TKAPInterfaceClient<KAP_T_MT::POSObjectStatics>;
using Numbers = TKAPInterfaceClient<KAP_T_MT::POSNumberInterface>;
using Strings = TKAPInterfaceClient<KAP_T_MT::POSStringInterface>;
using UnicodeStrings = TKAPInterfaceClient<KAP_T_MT::POSUnicodeStringInterface>;
using BinDatas = TKAPInterfaceClient<KAP_T_MT::POSBinDataInterface>;
using RawPointers = TKAPInterfaceClient<KAP_T_MT::POSRawPointerInterface>;
using Arrays = TKAPInterfaceClient<KAP_T_MT::POSArrayInterface>;
using Dicts = TKAPInterfaceClient<KAP_T_MT::POSDictInterface>;

// Defined by each program; called once the host is there.
void RegisterBenchmarks();

// The host's procedures, for floors.
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
  // The names that the library gives to its containers.
  const CKAPStringAtom fInstanceName{"POSObjectImpl"};
  const CKAPStringAtom fInterfaceName{"POSObjectInterface"};
};
const HostCalls& Host();

// A new object, to be measured upon. Ends the program when there is none.
Reference Made(KAPContainer* handle);

// Says how much was done in all iterations together.
inline void SetItems(benchmark::State& state, std::int64_t itemsPerIteration = 1) {
  state.SetItemsProcessed(state.iterations() * itemsPerIteration);
}

// Says of a peer or floor which part of its time ours is to take at most.
inline void SetTarget(benchmark::State& state, double ratio) { state.counters["target"] = ratio; }

}  // namespace Bench
