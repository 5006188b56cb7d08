// SPDX-License-Identifier: MIT
#include "Procedures.h"

// Sweeps over every registered procedure.

namespace {

using namespace KAP_T_MT;

// The error of a typed interface, "" for an interface that takes any object.
template <class Procedure>
std::string KindMessage() {
  const std::string_view interfaceName =
      Procedure::kMethod == "NewPOSDictIterator" ? "POSDictInterface" : Procedure::kInterface;
  const std::string kind(interfaceName.substr(0, interfaceName.find("Interface")));
  const bool anyObject = kind == "POSObject" || kind == "POSObjectStatics";
  return anyObject ? "" : "instance was not an " + kind;
}

class BadInputSweep {
 public:
  template <class Procedure>
  void Run() {
    RunAll<Procedure>(std::make_index_sequence<Procedure::Types::kCount>());
  }

  int Calls() const { return fCalls; }

 private:
  template <class Procedure, std::size_t... Positions>
  void RunAll(std::index_sequence<Positions...>) {
    (RunPosition<Procedure, Positions>(), ...);
  }

  template <class Procedure, std::size_t Position>
  void RunPosition() {
    using T = typename Procedure::Types::template Arg<Position>;
    if constexpr (Procedure::template Needs<Position>()) {
      RunOne<Procedure, Position>("null", nullptr);
      if constexpr (std::is_same_v<T, KAPContainer*>) RunHandles<Procedure, Position>();
    }
  }

  template <class Procedure, std::size_t Position>
  void RunHandles() {
    RunOne<Procedure, Position>("a container of another implementation", fForeign.get());
    RunOne<Procedure, Position>("an empty container", fEmpty.get());
    const std::string wanted = KindMessage<Procedure>();
    const bool wantsIterator = wanted == "instance was not an POSDictIterator";
    const bool wantsStreamer = wanted == "instance was not an POSStreamer";
    if (!wantsIterator) RunOne<Procedure, Position>("an iterator", fIterator.get());
    if (Position != 0 || wanted.empty()) return;
    for (const Object& object : fKinds) {
      const Given given(fWorld, Procedure::kInterface, Procedure::kMethod);
      const bool fits =
          !wantsIterator && !wantsStreamer && TypeOf(object.get()) == TypeOf(given.Subject());
      if (!fits) RunOne<Procedure, Position>("an object of another kind", object.get());
    }
  }

  template <class Procedure, std::size_t Position>
  void RunOne(const char* why, KAPContainer* handle) {
    SCOPED_TRACE(std::string(Procedure::kInterface) + "." + std::string(Procedure::kMethod) +
                 ", argument " + std::to_string(Position) + ": " + why);
    Given given(fWorld, Procedure::kInterface, Procedure::kMethod);
    const std::string before = given.Show();
    given.Spoil(Position, handle);
    EXPECT_TRUE(Procedure::Call(fWorld, given).value_or(true));
    const std::vector<std::string> reports = fWorld.TakeReports();
    using First = typename Procedure::Types::template Arg<0>;
    if (Procedure::kMethod.starts_with("IsPOS") ||
        (Procedure::kMethod == "IsEqual" && Position == 1)) {
      EXPECT_EQ(reports, std::vector<std::string>());
    } else if (Position == 0 && std::is_same_v<First, KAPContainer*> &&
               !KindMessage<Procedure>().empty()) {
      EXPECT_EQ(reports, std::vector<std::string>{KindMessage<Procedure>()});
    } else {
      EXPECT_FALSE(reports.empty());
    }
    EXPECT_EQ(given.Show(), before);
    ++fCalls;
  }

  int TypeOf(KAPContainer* object) const {
    return fWorld.Call<POSObjectInterface, "GetType">(object);
  }

  World fWorld;
  int fCalls = 0;
  std::vector<Object> fKinds = fWorld.OneOfEachKind();
  Object fForeign = fWorld.Foreign("NoPropertyObject");
  Object fEmpty = fWorld.EmptyContainer();
  Object fIterator =
      fWorld.Own(fWorld.Call<POSDictIteratorInterface, "NewPOSDictIterator">(fKinds[6].get()));
};

TEST(ProceduresTest, BadInput) {
  BadInputSweep sweep;
  ForEachProcedure([&]<class Procedure>() { sweep.Run<Procedure>(); });
  EXPECT_GT(sweep.Calls(), 200);
}

// A call of the host fails; when it is cold, the method tables are to be loaded anew, which takes
// calls of its own. True if there was such a call.
template <class Procedure>
bool Fails(const FailingCall& call, bool cold) {
  World world;
  Given given(world, Procedure::kInterface, Procedure::kMethod);
  const std::string before = given.Show();
  if (cold) world.MoveUnregisterCounter();
  std::optional<bool> failed;
  const bool fired = call.During(world, [&] { failed = Procedure::Call(world, given); });

  const bool quiet = Procedure::kMethod == "DeepGet";  // not found, whatever the reason
  const bool changes = Procedure::kMethod == "SetAt" || Procedure::kMethod == "Append" ||
                       Procedure::kMethod == "Put" || Procedure::kMethod == "Remove";
  EXPECT_EQ(failed.value_or(fired), fired);
  EXPECT_EQ(world.TakeReports().empty(), !fired || quiet);
  EXPECT_EQ(given.Show() != before, changes && !fired);
  EXPECT_EQ(Given::Released(), !fired && Procedure::kMethod == "NewPOSRawPointer" ? 1 : 0);
  return fired;
}

TEST(ProceduresTest, NthCallOfTheHostFails) {
  unsigned long failed = 0;
  ForEachProcedure([&]<class Procedure>() {
    for (const bool cold : {false, true}) {
      SCOPED_TRACE(testing::Message()
                   << Procedure::kInterface << '.' << Procedure::kMethod << (cold ? ", cold" : ""));
      failed +=
          FailingCall::Sweep([=](const FailingCall& call) { return Fails<Procedure>(call, cold); });
    }
  });
  EXPECT_GT(failed, 200u);
}

}  // namespace
