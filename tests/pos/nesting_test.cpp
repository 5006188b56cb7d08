// SPDX-License-Identifier: MIT
#include <sys/resource.h>

#include <csignal>
#include <functional>
#include <stdexcept>

#include "Threads.h"
#include "World.h"

// Nesting far deeper than any stack allows: an error that says so, or the right result. The release
// always succeeds.

namespace {

using namespace KAP_T_MT;

constexpr int kMillion = 1000000;

class NestingTest : public PosTest {
 protected:
  // One object in another, `levels` deep; the level decides which kind.
  Object Chain(int levels, const std::function<Object(int level, Object inner)>& wrap) const {
    Object object = Own(nullptr);
    for (int level = 0; level < levels; ++level) object = wrap(level, std::move(object));
    return object;
  }

  Object Alternate(int level, Object inner) const {
    return level % 2 == 0 ? InArray(std::move(inner)) : InDict(std::move(inner));
  }
  Object Alternating(int levels) const {
    return Chain(levels,
                 [this](int level, Object inner) { return Alternate(level, std::move(inner)); });
  }

  Object InArray(Object inner) const {
    Object array(fNewArray(), fRelease);
    if (inner) fAppend(array.get(), inner.get());
    return array;
  }
  Object InDict(Object inner) const {
    Object dict(fNewDict(), fRelease);
    if (inner) fPut(dict.get(), fKey.get(), inner.get());
    return dict;
  }
  // The pointer holds the reference.
  Object InRawPointer(Object inner) const {
    const auto release = [](void* handle) { gRelease(static_cast<KAPContainer*>(handle)); };
    return Object(fNewRawPointer(inner.release(), release), fRelease);
  }

  // Everything that follows nesting: all results are right, or there is an error that says why not.
  void CloneCompareAndRead(const Object& object, const std::string& text, bool mustSucceed) const {
    const char* end = nullptr;
    const Object read(fCreate(text.c_str(), &end), fRelease);
    ExpectDeepUnless(read != nullptr, mustSucceed);
    EXPECT_TRUE(read || (text.c_str() < end && end < text.c_str() + text.size()));
    ExpectDeepUnless(IsEqual(object, object), mustSucceed);
    Object clone(fClone(object.get()), fRelease);
    ExpectDeepUnless(clone != nullptr, mustSucceed);
    if (clone == object) clone.release();  // a scalar: the very handle, without a reference
  }
  void ExpectDeepUnless(bool succeeded, bool mustSucceed) const {
    const std::vector<std::string> reports = const_cast<NestingTest*>(this)->TakeReports();
    EXPECT_TRUE(succeeded || !mustSucceed);
    EXPECT_NE(succeeded, AnyContains(reports, "deep"));
  }

  static inline void (*gRelease)(KAPContainer*) = nullptr;

  void (*fRelease)(KAPContainer*) = gRelease = Proc<KAPContainerInterface, "Release">();
  POSArray* (*fNewArray)() = Proc<POSArrayInterface, "NewPOSArray">();
  POSDict* (*fNewDict)() = Proc<POSDictInterface, "NewPOSDict">();
  POSArrayInterface::Proc<"Append"> fAppend = Proc<POSArrayInterface, "Append">();
  POSDictInterface::Proc<"Put"> fPut = Proc<POSDictInterface, "Put">();
  POSRawPointerInterface::Proc<"NewPOSRawPointer"> fNewRawPointer =
      Proc<POSRawPointerInterface, "NewPOSRawPointer">();
  POSObjectInterface::Proc<"Clone"> fClone = Proc<POSObjectInterface, "Clone">();
  POSObjectStatics::Proc<"CreateFromText"> fCreate = Proc<POSObjectStatics, "CreateFromText">();
  OwnedAtom fKey = Key("a");
};

std::string OpenBrackets(int levels) { return std::string(static_cast<std::size_t>(levels), '['); }
std::string Brackets(int levels) {
  return OpenBrackets(levels) + std::string(static_cast<std::size_t>(levels), ']');
}

TEST_F(NestingTest, AMillionLevels) {
  std::string alternating;
  for (int i = 0; i < kMillion / 2; ++i) alternating += "[<a";
  const struct {
    const char* why;
    std::string text;
    std::function<Object(int level, Object inner)> wrap;
  } rows[] = {
      {"arrays", Brackets(kMillion),
       [this](int, Object inner) { return InArray(std::move(inner)); }},
      {"arrays and dictionaries", alternating,
       [this](int level, Object inner) { return Alternate(level, std::move(inner)); }},
      {"raw pointers in arrays", "1",
       [this](int level, Object inner) {
         return level % 2 != 0 ? InArray(std::move(inner)) : InRawPointer(std::move(inner));
       }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    const BalancedScope balanced(*this);
    Object chain = Chain(kMillion, row.wrap);
    CloneCompareAndRead(chain, row.text, false);
    FailFrom(KAP_T_MT::KAPFault::kAny, 1);  // releasing needs no memory
    chain.reset();
    EXPECT_FALSE(Fired());
    StopFaults();
  }
}

// Code of another component that releases the last reference to an object relies on the object
// being destroyed then, however the code is reached and however deep the release is nested.
TEST_F(NestingTest, ReleaseInsideReleaseCodeOfAComponent) {
  static std::string order;
  struct Held {
    void* object;
    static void Release(void* self) {
      order += "begin ";
      gRelease(static_cast<KAPContainer*>(static_cast<Held*>(self)->object));
      order += "end ";
    }
    static void Note(void*) { order += "released "; }
  };
  const char* const name = "TestHolder";
  for (const auto& entry : POSObjectInterface::Registration(nullptr, nullptr, nullptr)) {
    static int never;
    Register(name, entry.fMethodName, entry.fProcName, &never);
  }
  const struct {
    const char* why;
    std::function<Object(Held& held)> hold;
  } rows[] = {
      {"a release procedure",
       [this](Held& held) { return Object(fNewRawPointer(&held, &Held::Release), fRelease); }},
      {"an object of the component",
       [&](Held& held) { return Foreign(name, &held, &Held::Release); }},
      {"an instance added to an object",
       [&](Held& held) {
         Object array = Read("[]");
         const OwnedAtom atom = Key(name);
         EXPECT_EQ(TakeMessage(Containers<"RegisterInstance">(
                       array.get(), atom.get(), static_cast<void*>(&held), &Held::Release)),
                   "");
         return array;
       }},
  };
  for (const auto& row : rows) {
    for (const int levels : {0, 1, 2, 3, 4, 5, 29, 30, 31, 32, 33, 62, 63, 64, 95, 127, 1000}) {
      SCOPED_TRACE(row.why + (" below " + std::to_string(levels)));
      order.clear();
      Held last = {fNewRawPointer(this, &Held::Note)};
      Held array = {InDict(InArray(row.hold(last))).release()};
      Object object = row.hold(array);
      for (int level = 0; level < levels; ++level) object = Alternate(level, std::move(object));
      object.reset();
      EXPECT_EQ(order, "begin begin released end end ");
    }
  }
}

// Against its contract.
TEST_F(NestingTest, AReleaseProcedureThatThrows) {
  const auto fail = [](void*) { throw std::runtime_error("what went wrong"); };
  const Object array = InArray(Object(fNewRawPointer(this, fail), fRelease));
  Empty(array);
  EXPECT_EQ(TakeReport(), "what went wrong");
}

// Nested release procedures take stack; where it ends, releasing goes on without.
TEST_F(NestingTest, AMillionReleaseProcedures) {
  for (const std::size_t stackSize : {64u << 10, 1u << 20}) {
    const BalancedScope balanced(*this);
    Object chain = Chain(kMillion, [this](int, Object inner) {
      return inner ? InRawPointer(std::move(inner)) : Read("[]");
    });
    RunOnStack(stackSize, [&] { chain.reset(); });
  }
}

// The depth follows the stack of the thread.
TEST_F(NestingTest, SmallAndLargeStacks) {
  const struct {
    std::size_t stackSize;
    int levels;
    bool mustSucceed;
  } rows[] = {{64 << 10, 100000, false}, {128 << 10, 100000, false}, {256 << 10, 100000, false},
              {64 << 10, 5, true},       {256 << 10, 40, true},      {256 << 20, 20000, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.stackSize) + " bytes, " + std::to_string(row.levels));
    Object object = Alternating(row.levels);
    const std::string text = Brackets(row.levels);
    RunOnStack(row.stackSize, [&] {
      CloneCompareAndRead(object, text, row.mustSucceed);
      object.reset();
    });
  }
}

// On a stack that the program made itself, as for its signals, the space left is unknown.
void OnSignalStack(std::function<void()> body) {
  static std::function<void()> toRun;
  toRun = std::move(body);
  std::vector<char> block(512 << 10);
  stack_t own = {};
  stack_t before = {};
  own.ss_sp = block.data();
  own.ss_size = block.size();
  ASSERT_EQ(sigaltstack(&own, &before), 0);
  struct sigaction action = {};
  action.sa_handler = [](int) { toRun(); };
  action.sa_flags = SA_ONSTACK;
  struct sigaction former = {};
  sigaction(SIGUSR1, &action, &former);
  std::raise(SIGUSR1);  // handled before it returns
  sigaction(SIGUSR1, &former, nullptr);
  sigaltstack(&before, nullptr);
}

TEST_F(NestingTest, UnknownStack) {
  Object deep = Alternating(100000);
  const Object modest = Alternating(20);
  OnSignalStack([&] {
    CloneCompareAndRead(deep, OpenBrackets(100000), false);
    CloneCompareAndRead(modest, Brackets(20), true);
    deep.reset();
  });
}

// The ends of the main thread's stack are read from a file. After a moment without descriptors the
// thread is not limited for life.
TEST(UnaskedStackTest, NoDescriptorsForAMoment) {
  TestHost host;
  const KAPHost::Component library = host.Load(KAP_LIBRARY_PATH);
  const auto release = host.Proc<KAPContainerInterface, "Release">();
  const auto read = [&](int levels) {
    const Object object(
        host.Call<POSObjectStatics, "CreateFromText">(Brackets(levels).c_str(), nullptr), release);
    return object != nullptr;
  };
  rlimit before = {};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none = {0, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const bool withoutDescriptors = read(1000);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_FALSE(withoutDescriptors);
  EXPECT_EQ(host.TakeReport(), "property object is nested too deep");
  EXPECT_TRUE(read(1000));
}

TEST_F(NestingTest, APathOfManySegments) {
  const int levels = 300000;
  Object chain = Chain(
      levels, [this](int, Object inner) { return inner ? InDict(std::move(inner)) : Number(5); });
  std::string path;
  for (int i = 1; i < levels; ++i) path += ".a";
  EXPECT_EQ(Show(DeepGet(chain, path.c_str())), "5");
  EXPECT_EQ(DeepGet(chain, (path + ".a").c_str()), nullptr);
}

TEST_F(NestingTest, AnArrayInItself) {
  const Object array = Read("[1]");
  fAppend(array.get(), array.get());
  EXPECT_EQ(fClone(array.get()), nullptr);
  EXPECT_EQ(TakeReports(), (std::vector<std::string>{"property object is nested too deep",
                                                     "CPOSObject::Clone failed"}));
  EXPECT_FALSE(IsEqual(array, array));
  EXPECT_TRUE(AnyContains(TakeReports(), "deep"));
  Call<POSArrayInterface, "Remove">(array.get(), 1ul);
}

}  // namespace
