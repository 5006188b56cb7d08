// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <exception>
#include <string_view>
#include <vector>

#include "Choices.h"
#include "sequence/Procs.h"
#include "sequence/Shown.h"

// An object and what it must be.
struct Live {
  POSObject* Object() const { return fHandle.Handle(); }
  void ExpectSame() const { Expect(AreSame(Object(), fModel), "an object is as its model"); }

  Handle fHandle;
  ModelRef fModel;
};

// The live objects of a sequence, and calls on them. At some calls the host fails one of its own:
// then the call does everything, or reports a failure and does nothing.
class Driver {
 public:
  Driver(std::string_view input, Harness& harness) : fChoices(input), fHarness(harness) {}

  // Runs a call, sometimes with a failing call of the host. Returns whether it succeeded.
  template <class Call>
  bool Try(Call call) {
    KAPHost::Host& host = fHarness.Host();
    if (fChoices.Below(4) == 3) host.FailCall(KAPHost::KAPFault::kAny, 1 + fChoices.Below(12));
    bool hasThrown = false;
    try {
      call();
    } catch (const std::exception&) {
      hasThrown = true;
    }
    fHasFired = host.Fired();
    host.StopFaults();
    const bool hasFailed = !fHarness.TakeReports().empty() || hasThrown;
    Expect(fHasFired || !hasFailed, "a call without a fault does not fail");
    return !hasFailed;
  }

  // The same for a call that returns a new object.
  template <class Call>
  KAPContainer* TryNew(Call call) {
    KAPContainer* object = nullptr;
    const bool succeeded = Try([&] { object = call(); });
    Expect(!object == !succeeded, "a failure returns null");
    return object;
  }

  // The same for a call that changes a container, and its effect on the model.
  template <class Call, class Effect>
  void Change(Live& live, Call call, Effect effect) {
    if (Try([&] { call(live.Object()); })) effect(*live.fModel);
    live.ExpectSame();
  }

  // A live object; null without one, or if it is of another type.
  Live* Any() { return fLives.empty() ? nullptr : &fLives[fChoices.Below(fLives.size())]; }
  Live* Any(KAP_T_MT::POSType type) {
    Live* const live = Any();
    return live && live->fModel->fType == type ? live : nullptr;
  }
  // A value to put into the container; null if it contains the container or is too large.
  Live* ValueFor(const Live* container) {
    Live* const value = container ? Any() : nullptr;
    if (!value || Contains(value->fModel, container->fModel)) return nullptr;
    const std::size_t size = SizeOf(value->fModel, kMaxSize);
    for (const Live& live : fLives) {
      if (SizeOf(live.fModel, kMaxSize) * (size + 1) >= kMaxSize) return nullptr;
    }
    return value;
  }
  // Without an object it does nothing. The oldest live object makes room.
  void Add(KAPContainer* object, ModelRef model) {
    if (!object) return;
    Handle handle(object, KAP_T_MT::KAPAdopt());
    if (fLives.size() == kMaxHandles) fLives.erase(fLives.begin());
    fLives.push_back({std::move(handle), std::move(model)});
  }

  Choices fChoices;
  Harness& fHarness;
  std::vector<Live> fLives;
  bool fHasFired = false;  // in the last Try

 private:
  static constexpr std::size_t kMaxHandles = 6;
  static constexpr std::size_t kMaxSize = 1000;  // of a value; shared parts let it grow very fast
};
