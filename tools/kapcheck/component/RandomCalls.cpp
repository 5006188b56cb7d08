// SPDX-License-Identifier: MIT
#include "component/RandomCalls.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "kap/KAPHostInterfaces.h"
#include "process/Progress.h"

namespace KAPCheck {

namespace {

using namespace KAP_T_MT;

constexpr unsigned long kMostNumber = 63;
constexpr std::size_t kBlockSize = 4096;
// Arguments further on do not get a place. One more block is for data.
constexpr std::size_t kPlaces = 4;

// Strings that mean something to some component, and some that mean nothing to any.
constexpr const char* kStrings[] = {"",
                                    "a",
                                    "b",
                                    "key",
                                    "a.b[2]",
                                    "[1 2 (three)]",
                                    "< a 1 b < c [1] > >",
                                    "12",
                                    "-1.5",
                                    "(string)",
                                    "`0041`",
                                    "any",
                                    "int",
                                    "no such name",
                                    "a\x80",
                                    "[",
                                    "< a",
                                    "TypeA1.0",
                                    "x/y",
                                    "\xF0\x9F\x98\x80 \\"};

// Deliberately not const: a component that writes into borrowed memory crashes elsewhere instead.
alignas(16) unsigned char gBytes[kBlockSize] = "bytes";
const unsigned short kUnits[] = {'u', 'n', 0xD83D, 0xDE00, 0};

std::string NameOf(const DeclaredMethod& method) {
  return std::string(method.fInterface) + ", " + method.fMethod;
}

void* Find(Trial& trial, const DeclaredMethod& method) {
  void* const proc = trial.Host().Find(method.fInterface, method.fMethod, method.fProc);
  if (!proc) throw TestFailure("declares but does not register " + NameOf(method));
  return proc;
}

bool CanCall(const DeclaredMethod& method) {
  const ValueKind* const end = method.fArguments + method.fCount;
  return std::find(method.fArguments, end, ValueKind::kOther) == end &&
         method.fResult != ValueKind::kOther;
}

void Call(const DeclaredMethod& method, void* proc, Value& result, const Value* arguments) {
  if (!method.fThrows) {
    Guarded(NameOf(method), [&] { method.fCall(proc, &result, arguments); });
    return;
  }
  try {
    method.fCall(proc, &result, arguments);
  } catch (...) {  // declared
  }
}

// An argument in a description.
std::string Quoted(const char* text) { return '"' + std::string(text) + '"'; }

}  // namespace

Block::Block() {
  void* const pages =
      ::mmap(nullptr, 2 * kBlockSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) throw std::bad_alloc();
  fBytes = pages;
  ::mprotect(static_cast<char*>(pages) + kBlockSize, kBlockSize, PROT_NONE);
}

Block::~Block() {
  if (fBytes) ::munmap(fBytes, 2 * kBlockSize);
}

void Block::Clear() { std::memset(fBytes, 0, kBlockSize); }

void* Block::Handle() const {
  void* handle = nullptr;
  std::memcpy(&handle, fBytes, sizeof handle);
  return handle;
}

RandomCaller::RandomCaller(Trial& trial, unsigned long seed, unsigned number)
    : fTrial(trial), fHost(trial.Host()), fBlocks(kPlaces + 1) {
  std::seed_seq seeds{static_cast<unsigned>(seed), static_cast<unsigned>(seed >> 32), number};
  fRandom.seed(seeds);
  std::string others;
  for (const DeclaredMethod& method : trial.Scenario()->Declarations()) {
    if (CanCall(method)) {
      fProcedures.push_back({&method, Find(trial, method)});
    } else {
      others += (others.empty() ? "cannot call " : "; ") + NameOf(method);
    }
  }
  if (!others.empty()) SendNote(others);
  KAPContainer* stream = nullptr;
  Release(fHost.Proc<KAPStreamFactoryInterface, "NewPositionableMemoryStream">()(&stream));
  Keep(stream, fAge += kGeneration);
  KAPContainer* empty = nullptr;
  Release(fHost.Proc<KAPContainerInterface, "NewContainer">()(&empty));
  Keep(empty, fAge += kGeneration);
  for (const char* const text : kStrings) {
    fAtoms.push_back(fHost.Proc<KAPStringInterface, "NewStringAtom">()(text));
  }
}

void RandomCaller::ReleaseAll() {
  for (const Object& object : fObjects) {
    fHost.Proc<KAPContainerInterface, "Release">()(object.fContainer);
  }
  fObjects.clear();
  for (KAPStringAtom* const atom : fAtoms) DeleteAtom(atom);
  fAtoms.clear();
}

void RandomCaller::DeleteAtom(void* atom) {
  fHost.Proc<KAPStringInterface, "DeleteStringAtom">()(static_cast<KAPStringAtom*>(atom));
}

void RandomCaller::Release(KAPError* error) { fHost.Proc<KAPErrorInterface, "Release">()(error); }

// Takes over a reference.
void RandomCaller::Keep(KAPContainer* container, Age age) {
  if (!container) return;
  if (fPlaceOf.emplace(container, fObjects.size()).second) {
    fObjects.push_back({container, age});
  } else {
    fHost.Proc<KAPContainerInterface, "Release">()(container);
  }
}

void RandomCaller::Make(const BeforeCall& beforeCall, bool isLate) {
  if (fProcedures.empty()) return;
  const auto [method, proc] = fProcedures[Below(fProcedures.size())];
  Prepare(*method);
  beforeCall(fText);
  Value result;
  if (isLate) fTrial.Tap().Forbid();
  Call(*method, proc, result, fArguments.data());
  fTrial.Tap().Allow();
  Take(*method, result);
}

void RandomCaller::Prepare(const DeclaredMethod& method) {
  fFirst = kNone;
  fArguments.assign(method.fCount + 1, {});
  fText = NameOf(method) + "(";
  for (std::size_t i = 0; i < method.fCount; ++i) {
    fText += (i == 0 ? "" : ", ") + Argument(method.fArguments[i], i, fArguments[i]);
  }
  fText += ')';
}

std::string RandomCaller::Argument(ValueKind kind, std::size_t place, Value& value) {
  switch (kind) {
    case ValueKind::kInteger:
      value.fInteger = Below(kMostNumber + 1);
      return std::to_string(value.fInteger);
    case ValueKind::kReal:
      value.fReal = static_cast<double>(Below(1000)) / 8 - 50;
      return std::to_string(value.fReal);
    case ValueKind::kContainer:
      return AnyContainer(value);
    case ValueKind::kProcedure:
      return "null";
    default:
      break;
  }
  if (Seldom()) return "null";
  const std::size_t text = Below(std::size(kStrings));
  switch (kind) {
    case ValueKind::kAtom:
      value.fPointer = fAtoms[text];
      return "atom " + Quoted(kStrings[text]);
    case ValueKind::kString:
      value.fPointer = const_cast<char*>(kStrings[text]);
      return Quoted(kStrings[text]);
    case ValueKind::kBytes:
      value.fPointer = gBytes;
      return "bytes";
    case ValueKind::kUnits:
      value.fPointer = const_cast<unsigned short*>(kUnits);
      return "units";
    default:
      break;
  }
  const bool isData = kind == ValueKind::kData;
  if (!isData && place >= kPlaces) return "null";
  const Block& block = fBlocks[isData ? kPlaces : place];
  if (!isData) fBlocks[place].Clear();
  value.fPointer = block.Get();
  return isData ? "data" : "place";
}

// A handle that is older than the first one of the call; null when there is none.
std::string RandomCaller::AnyContainer(Value& value) {
  if (fObjects.empty() || Seldom()) return "null";
  for (int attempt = 0; attempt < 10; ++attempt) {
    const std::size_t number = Below(fObjects.size());
    if (fFirst != kNone && fObjects[number].fAge >= fObjects[fFirst].fAge) continue;
    if (fFirst == kNone) fFirst = number;
    value.fPointer = fObjects[number].fContainer;
    return "object " + std::to_string(number + 1);
  }
  return "null";
}

void RandomCaller::Take(const DeclaredMethod& method, const Value& result) {
  std::vector<void*> placed(std::min(method.fCount, kPlaces));
  for (std::size_t i = 0; i < placed.size(); ++i) {
    if (fArguments[i].fPointer == fBlocks[i].Get()) placed[i] = fBlocks[i].Handle();
  }
  if (method.fResult == ValueKind::kError && result.fPointer) {
    Release(static_cast<KAPError*>(result.fPointer));
    for (void* const place : placed) {
      if (place) throw TestFailure(NameOf(method) + " returns both an error and a result");
    }
  }
  if (method.fResult == ValueKind::kAtom) DeleteAtom(result.fPointer);
  if (method.fResult == ValueKind::kString && result.fPointer) {
    static_cast<void>(std::strlen(static_cast<const char*>(result.fPointer)));
  }
  if (method.fResult == ValueKind::kContainer) TakeContainer(method, result.fPointer);
  for (std::size_t i = 0; i < placed.size(); ++i) {
    if (method.fArguments[i] == ValueKind::kContainerPlace) TakeContainer(method, placed[i]);
    if (method.fArguments[i] == ValueKind::kAtomPlace) DeleteAtom(placed[i]);
  }
}

void RandomCaller::TakeContainer(const DeclaredMethod& method, void* handle) {
  // A handle that the call was given comes back without a reference.
  for (const Value& argument : fArguments) {
    if (argument.fPointer == handle) return;
  }
  const bool isFound = fFirst != kNone && std::strncmp(method.fMethod, "New", 3) != 0 &&
                       std::strncmp(method.fMethod, "Create", 6) != 0;
  Keep(static_cast<KAPContainer*>(handle),
       isFound ? fObjects[fFirst].fAge - 1 : fAge += kGeneration);
}

}  // namespace KAPCheck
