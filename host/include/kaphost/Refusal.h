#pragma once

namespace KAPHost {

// The kinds of calls that can be refused. A refused call does nothing and gives what its contract
// says for failure: a null atom, error or block, the core memory error, or false. "Any" stands for
// all the others together.
enum class Call {
  kAny,
  kAtom,       // NewStringAtom
  kError,      // NewError
  kBlock,      // Alloc, Realloc
  kContainer,  // NewFullContainer, NewContainer, CloneContainer
  kReference,  // AddRef of a container
  kInstance,   // NGetInstance, GetInstance, RegisterInstance, RegisterInterface
  kMethod,     // GetMethod, GetParentMethod
};

inline constexpr unsigned kCallKinds = 8;

}  // namespace KAPHost
