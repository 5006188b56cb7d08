// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "component/Trial.h"

namespace KAPCheck {

// Memory that a procedure may write, of 4096 bytes; a write past its end crashes.
class Block {
 public:
  Block();
  Block(Block&& other) noexcept : fBytes(std::exchange(other.fBytes, nullptr)) {}
  ~Block();

  void* Get() const { return fBytes; }
  void Clear();
  // The first word.
  void* Handle() const;

 private:
  void* fBytes = nullptr;
};

// A client that calls the declared interfaces with random arguments, and keeps the objects that it
// gets. What it calls depends on the seed and on what the calls return. Each thread has a caller of
// its own. Members throw TestFailure when a procedure lets an exception out, or returns an error
// together with a result.
//
// Not destroyed with its objects, deliberately: after a failure, releasing them might end in a
// crash that hides the reason.
class RandomCaller {
 public:
  using BeforeCall = std::function<void(const std::string& call)>;

  // Of callers with one seed, each number calls something else. Throws TestFailure when a declared
  // procedure is not registered.
  RandomCaller(Trial& trial, unsigned long seed, unsigned number = 0);
  RandomCaller(const RandomCaller&) = delete;
  RandomCaller& operator=(const RandomCaller&) = delete;

  // Makes one call. `beforeCall` gets its description.
  void CallOne(const BeforeCall& beforeCall) { Make(beforeCall, false); }
  // The same after the component's termination: what the procedure calls of the host is misplaced
  // (HostTap).
  void CallLate(const BeforeCall& beforeCall) { Make(beforeCall, true); }
  void ReleaseAll();

 private:
  // Objects refer to other objects, and a ring of references is never released. So an object is
  // only passed together with a younger first one, which may come to refer to it. What a call finds
  // in its first argument counts as a little older than that one.
  using Age = unsigned long;
  static constexpr Age kGeneration = 1ul << 20;

  struct Object {
    KAPContainer* fContainer;
    Age fAge;
  };
  struct Procedure {
    const DeclaredMethod* fMethod;
    void* fProc;
  };
  static constexpr std::size_t kNone = ~std::size_t{0};

  std::size_t Below(std::size_t count) { return fRandom() % count; }
  bool Seldom() { return Below(10) == 0; }
  void DeleteAtom(void* atom);
  void Release(KAPError* error);
  void Keep(KAPContainer* container, Age age);

  void Make(const BeforeCall& beforeCall, bool isLate);
  void Prepare(const DeclaredMethod& method);
  // Fills in an argument and returns its description.
  std::string Argument(ValueKind kind, std::size_t place, Value& value);
  std::string AnyContainer(Value& value);
  void Take(const DeclaredMethod& method, const Value& result);
  void TakeContainer(const DeclaredMethod& method, void* handle);

  Trial& fTrial;
  KAPHost::Host& fHost;
  std::mt19937_64 fRandom;
  std::vector<Procedure> fProcedures;
  Age fAge = 0;
  std::vector<Object> fObjects;  // in the order in which they came
  std::map<KAPContainer*, std::size_t> fPlaceOf;
  std::vector<KAPStringAtom*> fAtoms;
  std::vector<Block> fBlocks;
  std::vector<Value> fArguments;
  std::string fText;           // of the call
  std::size_t fFirst = kNone;  // the first object of the call
};

}  // namespace KAPCheck
