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
  kContainer,  // NewFullContainer, NewContainer, CloneContainer, the container of a stream
  kReference,  // AddRef of a container
  kInstance,   // NGetInstance, GetInstance, RegisterInstance, RegisterInterface
  kMethod,     // GetMethod, GetParentMethod
  kBuffer,     // NewBuffer
  kStream,     // the procedures of the stream factory
  kRead,       // of a stream, like the next four
  kWrite,
  kSeek,  // Seek, Rewind
  kMark,
  kIndependentStream,  // CreateIndependently...
  kCache,              // NewCacheID, NewCacheSet, NewCachePurge, Add
  kSink,               // New... of data sinks and filters
  kProgress,           // New... of progress objects
};

inline constexpr unsigned kCallKinds = 18;

}  // namespace KAPHost
