#include "Procedures.h"

// Sweeps over every registered procedure.

namespace {

using namespace KAP_T_MT;

struct BadHandle {
  const char* fWhy;
  KAPContainer* fHandle;
};

// The error of a typed interface, "" for an interface that takes any object.
std::string KindMessage(const std::string& interfaceName) {
  const std::string kind = interfaceName.substr(0, interfaceName.find("Interface"));
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
    if constexpr (Procedure::template Needs<Position>()) {
      using T = typename Procedure::Types::template Arg<Position>;
      constexpr bool isHandle = std::is_same_v<T, KAPContainer*>;
      std::vector<BadHandle> bad = {{"null", nullptr}};
      if (isHandle) AddHandles<Procedure, Position>(bad);
      for (const BadHandle& handle : bad) RunOne<Procedure, Position>(handle);
    }
  }

  template <class Procedure, std::size_t Position>
  void AddHandles(std::vector<BadHandle>& bad) {
    const bool wantsIterator =
        std::string_view(Procedure::kInterface) == "POSDictIteratorInterface" &&
        Procedure::kMethod != "NewPOSDictIterator";
    bad.push_back({"a container of another implementation", fForeign.get()});
    bad.push_back({"an empty container", fEmpty.get()});
    if (!wantsIterator) bad.push_back({"an iterator", fIterator.get()});
    if (Position != 0 || KindMessage(Procedure::kInterface).empty()) return;
    for (const Object& object : fKinds) {
      Given given(fWorld, Procedure::kInterface, Procedure::kMethod);
      const bool fits = !wantsIterator && TypeOf(object.get()) == TypeOf(given.Subject());
      if (!fits) bad.push_back({"an object of another kind", object.get()});
    }
  }

  template <class Procedure, std::size_t Position>
  void RunOne(const BadHandle& bad) {
    SCOPED_TRACE(std::string(Procedure::kInterface) + "." + std::string(Procedure::kMethod) +
                 ", argument " + std::to_string(Position) + ": " + bad.fWhy);
    Given given(fWorld, Procedure::kInterface, Procedure::kMethod);
    const std::string before = given.Show();
    given.Spoil(Position, bad.fHandle);
    EXPECT_TRUE(Procedure::Call(fWorld, given).value_or(true));
    const std::vector<std::string> reports = fWorld.TakeReports();
    const bool quiet = Procedure::kMethod.starts_with("IsPOS") ||
                       (Procedure::kMethod == "IsEqual" && Position == 1);
    if (quiet) {
      EXPECT_EQ(reports, std::vector<std::string>());
    } else if (Position == 0 && Procedure::template Needs<0>() && TakesObjectFirst<Procedure>() &&
               !KindMessage(Procedure::kInterface).empty()) {
      const bool takesDict = Procedure::kMethod == "NewPOSDictIterator";
      EXPECT_EQ(reports, std::vector<std::string>{
                             KindMessage(takesDict ? "POSDictInterface" : Procedure::kInterface)});
    } else {
      EXPECT_FALSE(reports.empty());
    }
    EXPECT_EQ(given.Show(), before);
    ++fCalls;
  }

  template <class Procedure>
  static constexpr bool TakesObjectFirst() {
    return std::is_same_v<typename Procedure::Types::template Arg<0>, KAPContainer*>;
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

// How the nth call of the host fails: alone, or with all after it; and whether method tables are to
// be loaded anew, which takes calls of its own.
struct Refusal {
  const char* fWhy;
  bool fAndAllAfterIt;
  bool fCold;
};

// True while there is a call to refuse.
template <class Procedure>
bool RefuseCall(const Refusal& refusal, unsigned long n) {
  SCOPED_TRACE(std::string(Procedure::kInterface) + "." + std::string(Procedure::kMethod) + ", " +
               refusal.fWhy + " from call " + std::to_string(n));
  World world;
  Given given(world, Procedure::kInterface, Procedure::kMethod);
  const std::string before = given.Show();
  if (refusal.fCold) world.MoveUnregisterCounter();
  if (refusal.fAndAllAfterIt) {
    world.RefuseFrom(KAPHost::Call::kAny, n);
  } else {
    world.Refuse(KAPHost::Call::kAny, n);
  }
  const std::optional<bool> failed = Procedure::Call(world, given);
  const bool fired = world.Fired();
  world.StopRefusing();

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
  unsigned long refused = 0;
  for (const Refusal& refusal : {Refusal{"one refused", false, false},
                                 {"all refused", true, false},
                                 {"one refused, cold", false, true},
                                 {"all refused, cold", true, true}}) {
    ForEachProcedure([&]<class Procedure>() {
      for (unsigned long n = 1; RefuseCall<Procedure>(refusal, n) && !testing::Test::HasFailure();
           ++n) {
        ++refused;
      }
    });
  }
  EXPECT_GT(refused, 200u);
}

}  // namespace
