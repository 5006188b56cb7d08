// SPDX-License-Identifier: MIT
#include "component/RandomCalls.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <random>

#include "kap/KAPHostInterfaces.h"

namespace KAPCheck {

namespace {

using namespace KAP_T_MT;

constexpr unsigned long kMostNumber = 63;

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

// Not const: a component that writes into borrowed memory crashes elsewhere instead.
alignas(16) unsigned char gBytes[4096] = "bytes";
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
  } catch (const std::exception&) {  // declared
  }
}

class RandomCaller {
 public:
  RandomCaller(Trial& trial, unsigned long seed)
      : fTrial(trial), fHost(trial.Host()), fRandom(seed) {
    KAPContainer* stream = nullptr;
    Release(fHost.Proc<KAPStreamFactoryInterface, "NewPositionableMemoryStream">()(&stream));
    Keep(stream, ++fAge);
    KAPContainer* empty = nullptr;
    Release(fHost.Proc<KAPContainerInterface, "NewContainer">()(&empty));
    Keep(empty, ++fAge);
    for (const char* const text : kStrings) fAtoms.push_back(Atom(text));
  }
  RandomCaller(const RandomCaller&) = delete;
  RandomCaller& operator=(const RandomCaller&) = delete;
  ~RandomCaller() {
    for (const auto& [container, age] : fContainers) {
      fHost.Proc<KAPContainerInterface, "Release">()(container);
    }
    for (KAPStringAtom* atom : fAtoms) fHost.Proc<KAPStringInterface, "DeleteStringAtom">()(atom);
  }

  void CallOne(const std::function<void(const std::string&)>& beforeCall) {
    const std::span<const DeclaredMethod> all = fTrial.Scenario()->Declarations();
    const DeclaredMethod& method = all[Below(all.size())];
    if (!CanCall(method)) return;
    void* const proc = Find(fTrial, method);
    Prepare(method);
    beforeCall(NameOf(method));
    Value result;
    Call(method, proc, result, fArguments.data());
    Take(method, result);
  }

 private:
  // Objects refer to other objects, and a ring of references is never released. So an object is
  // only passed together with a younger first one, which may come to refer to it. What a call finds
  // in its first argument counts as a little older than that one.
  using Age = unsigned long;
  static constexpr Age kGeneration = 1ul << 20;

  std::size_t Below(std::size_t count) { return fRandom() % count; }
  bool Seldom() { return Below(10) == 0; }
  KAPStringAtom* Atom(const char* text) {
    return fHost.Proc<KAPStringInterface, "NewStringAtom">()(text);
  }
  void DeleteAtom(void* atom) {
    fHost.Proc<KAPStringInterface, "DeleteStringAtom">()(static_cast<KAPStringAtom*>(atom));
  }
  void Release(KAPError* error) { fHost.Proc<KAPErrorInterface, "Release">()(error); }

  // Takes over a reference.
  void Keep(KAPContainer* container, Age age) {
    if (!container) return;
    if (!fContainers.emplace(container, age).second) {
      fHost.Proc<KAPContainerInterface, "Release">()(container);
    }
  }

  // A handle that is older than the first one of the call; null when there is none.
  KAPContainer* AnyContainer() {
    if (Seldom() || fContainers.empty()) return nullptr;
    for (int attempt = 0; attempt < 10; ++attempt) {
      const auto found =
          std::next(fContainers.begin(), static_cast<std::ptrdiff_t>(Below(fContainers.size())));
      if (fFirst && found->second >= fContainers.at(fFirst)) continue;
      if (!fFirst) fFirst = found->first;
      return found->first;
    }
    return nullptr;
  }

  void Prepare(const DeclaredMethod& method) {
    fFirst = nullptr;
    fPlaces.fill({});
    fArguments.assign(method.fCount, {});
    for (std::size_t i = 0; i < method.fCount; ++i) {
      fArguments[i] = Argument(method.fArguments[i], i);
    }
  }
  Value Argument(ValueKind kind, std::size_t i) {
    Value value;
    value.fInteger = Below(kMostNumber + 1);
    value.fReal = static_cast<double>(Below(1000)) / 8 - 50;
    switch (kind) {
      case ValueKind::kAtom:
        if (!Seldom()) value.fPointer = fAtoms[Below(fAtoms.size())];
        break;
      case ValueKind::kString:
        if (!Seldom()) value.fPointer = const_cast<char*>(kStrings[Below(std::size(kStrings))]);
        break;
      case ValueKind::kBytes:
      case ValueKind::kData:
        if (!Seldom()) value.fPointer = gBytes;
        break;
      case ValueKind::kUnits:
        if (!Seldom()) value.fPointer = const_cast<unsigned short*>(kUnits);
        break;
      case ValueKind::kContainer:
        value.fPointer = AnyContainer();
        break;
      case ValueKind::kContainerPlace:
      case ValueKind::kAtomPlace:
      case ValueKind::kPlace:
        if (i < fPlaces.size() && !Seldom()) value.fPointer = &fPlaces[i];
        break;
      default:
        break;
    }
    return value;
  }

  void Take(const DeclaredMethod& method, const Value& result) {
    if (method.fResult == ValueKind::kError && result.fPointer) {
      Release(static_cast<KAPError*>(result.fPointer));
      for (void* const place : fPlaces) {
        if (place) throw TestFailure(NameOf(method) + " returns both an error and a result");
      }
    }
    if (method.fResult == ValueKind::kAtom) DeleteAtom(result.fPointer);
    if (method.fResult == ValueKind::kString && result.fPointer) {
      static_cast<void>(std::strlen(static_cast<const char*>(result.fPointer)));
    }
    if (method.fResult == ValueKind::kContainer) TakeContainer(method, result.fPointer);
    for (std::size_t i = 0; i < std::min(method.fCount, fPlaces.size()); ++i) {
      if (method.fArguments[i] == ValueKind::kContainerPlace) TakeContainer(method, fPlaces[i]);
      if (method.fArguments[i] == ValueKind::kAtomPlace) DeleteAtom(fPlaces[i]);
    }
  }
  void TakeContainer(const DeclaredMethod& method, void* handle) {
    // A handle that the call was given comes back without a reference.
    for (const Value& argument : fArguments) {
      if (argument.fPointer == handle) return;
    }
    const bool isFound = fFirst && std::strncmp(method.fMethod, "New", 3) != 0 &&
                         std::strncmp(method.fMethod, "Create", 6) != 0;
    Keep(static_cast<KAPContainer*>(handle),
         isFound ? fContainers.at(fFirst) - 1 : fAge += kGeneration);
  }

  Trial& fTrial;
  KAPHost::Host& fHost;
  std::mt19937_64 fRandom;
  Age fAge = kGeneration;
  std::map<KAPContainer*, Age> fContainers;
  std::vector<KAPStringAtom*> fAtoms;
  std::vector<Value> fArguments;
  std::array<void*, 4> fPlaces{};
  KAPContainer* fFirst = nullptr;
};

}  // namespace

void CallRandomly(Trial& trial, unsigned long seed, int count,
                  const std::function<void(const std::string&)>& beforeCall) {
  RandomCaller caller(trial, seed);
  for (int i = 0; i < count; ++i) caller.CallOne(beforeCall);
}

std::vector<LateCall> LateCallsOf(Trial& trial) {
  std::vector<LateCall> calls;
  for (const DeclaredMethod& method : trial.Scenario()->Declarations()) {
    if (!CanCall(method)) continue;
    calls.push_back({NameOf(method), [&method, proc = Find(trial, method)] {
                       const std::vector<Value> arguments(method.fCount + 1);
                       Value result;
                       Call(method, proc, result, arguments.data());
                     }});
  }
  return calls;
}

}  // namespace KAPCheck
