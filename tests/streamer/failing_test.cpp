// SPDX-License-Identifier: MIT
#include "StreamerWorld.h"
#include "Threads.h"

// Failures outside the document, and documents that demand too much.

namespace {

using namespace KAP_T_MT;
using HostCall = KAP_T_MT::KAPFault;

class FailingTest : public StreamerTest {
 protected:
  // Writes and reads with a failing call of a kind. Reading returns all or nothing, writing the
  // beginning of the document; there is a report exactly if there was such a call, which is the
  // result.
  bool Fails(const FailingCall& call, HostCall kind) {
    const BalancedScope balanced(*this);
    const Object out = NewMemory();
    const Object in = NewBuffer(fDocument);
    Object object = Own(nullptr);
    const auto writeAndRead = [&] {
      Serialize(out, fObject);
      object = Deserialize(in);
    };
    const bool fired = call.During(*this, writeAndRead, kind);
    const std::string written = Contents(out);
    EXPECT_TRUE(fDocument.starts_with(written)) << written;
    EXPECT_TRUE(!object || IsEqual(object, fObject));
    EXPECT_EQ(fired, !object || written != fDocument);
    EXPECT_EQ(fired, !TakeReports().empty());
    return fired;
  }

  // Under the key, or at the end of an array.
  void Hold(const Object& container, const char* key, const Object& held) const {
    if (Call<POSArrayInterface, "IsPOSArray">(container.get())) {
      Call<POSArrayInterface, "Append">(container.get(), held.get());
    } else {
      Put(container, key, held);
    }
  }

  const Object fObject = Everything();
  const std::string fDocument = Document(fObject);
};

TEST_F(FailingTest, NthCallOfTheHostFails) {
  const std::pair<HostCall, unsigned long> rows[] = {
      // with so many calls at least
      {HostCall::kRead, 30},  {HostCall::kWrite, 4},  {HostCall::kMark, 1},
      {HostCall::kSeek, 1},   {HostCall::kBuffer, 2}, {HostCall::kContainer, 10},
      {HostCall::kBlock, 10}, {HostCall::kAny, 100}};
  for (const auto& [kind, calls] : rows) {
    SCOPED_TRACE(static_cast<int>(kind));
    const auto fails = [&, of = kind](const FailingCall& call) { return Fails(call, of); };
    EXPECT_GE(FailingCall::Sweep(fails), 2 * calls);
  }
}

// The first failure is the one reported.
TEST_F(FailingTest, SeekingBackFailsToo) {
  for (const HostCall kind : {HostCall::kMark, HostCall::kSeek}) {
    FailFrom(kind, 1);
    EXPECT_EQ(Deserialize(NewBuffer(Tagged("[%]"))), nullptr);
    EXPECT_TRUE(Fired());
    EXPECT_EQ(TakeReport(), "Cannot determine streaming params");
    StopFaults();
  }
}

TEST_F(FailingTest, EveryTruncation) {
  const BalancedScope balanced(*this);
  for (std::size_t size = 0; size < fDocument.size(); ++size) {
    SCOPED_TRACE(size);
    EXPECT_EQ(Outcome(std::string_view(fDocument).substr(0, size)),
              size < kTag.size() ? "error: getNextChar unexpected EOF" : "error: unexpected EOF");
  }
}

TEST_F(FailingTest, ShortReads) {
  for (std::size_t most = 1; most <= 520; ++most) {
    SCOPED_TRACE(most);
    const Object stream = NewBuffer(fDocument + "#");
    LimitReads(most);
    const Object object = Deserialize(stream);
    StopFaults();
    EXPECT_TRUE(IsEqual(object, fObject));
    EXPECT_EQ(Rest(stream), "#");
  }
}

// Memory grows with the bytes that are there.
TEST_F(FailingTest, PromisedBytes) {
  FailBlocksAbove(4096);
  EXPECT_EQ(OutcomeOfValue("{\"t\" #1000000000000000 " + std::string(2000, '0')),
            "error: unexpected EOF");
  EXPECT_EQ(OutcomeOfValue("[[[{\"t\" #18446744073709549568 ff}"),
            "error: GetChars ran out of input");
  EXPECT_FALSE(Fired());
}

TEST_F(FailingTest, DeepNesting) {
  constexpr int kLevels = 100000;
  Object deep = Read("[]");
  std::string dicts;
  std::string lengths;
  for (int i = 0; i < kLevels; ++i) {
    const Object inner = std::exchange(deep, Read("[]"));
    Call<POSArrayInterface, "Append">(deep.get(), inner.get());
    dicts += "<\"a\"[";
    lengths += "{\"t\"";
  }
  for (const std::size_t stackSize : {64u << 10, 256u << 10, 1u << 20}) {
    SCOPED_TRACE(stackSize);
    RunOnStack(stackSize, [&] {
      EXPECT_EQ(OutcomeOfValue(Value(Read("[<a[]>]"))), "[<a []>]");
      Serialize(NewMemory(), deep);
      EXPECT_NE(TakeReport().find("deep"), std::string::npos);
      for (const std::string& text :
           {std::string(kLevels, '['), dicts, std::string(kLevels, '{'), lengths}) {
        EXPECT_EQ(Deserialize(NewBuffer(Tagged(text))), nullptr);
        EXPECT_NE(TakeReport().find("deep"), std::string::npos);
      }
    });
  }
}

// What contains itself is found before its other values are written many times, or half a gigabyte
// of indentation.
TEST_F(FailingTest, AContainerInItself) {
  constexpr std::size_t kOthers = 1000;
  const Object array = Read("[]");
  for (std::size_t i = 0; i < kOthers; ++i) {
    Call<POSArrayInterface, "Append">(array.get(), Number(1).get());
  }
  const Object dict = Read("<a 1>");
  const auto sizeOf = [&](const Object& object) {
    const Object stream = NewMemory();
    Serialize(stream, object);
    EXPECT_EQ(TakeReport(), "property object is nested too deep");
    return Contents(stream).size();
  };
  Call<POSArrayInterface, "Append">(array.get(), array.get());
  EXPECT_LT(sizeOf(array), 5 * kOthers * 9);
  Call<POSArrayInterface, "Remove">(array.get(), kOthers);

  Put(dict, "b", dict);
  EXPECT_LT(sizeOf(dict), 1000u);
  Put(dict, "b", array);
  Call<POSArrayInterface, "Append">(array.get(), dict.get());
  EXPECT_LT(sizeOf(dict), 5 * kOthers * 9);
  Call<POSArrayInterface, "Remove">(array.get(), kOthers);
}

// The check of the depth meets the slot first.
TEST_F(FailingTest, ASkippedSlotFarDown) {
  Object object = Read("[]");
  Call<POSArrayInterface, "SetAt">(object.get(), 1ul, Number(1).get());
  for (int level = 0; level < 100; ++level) {
    const Object inner = std::exchange(object, Read("[]"));
    Hold(object, "", inner);
  }
  Serialize(NewMemory(), object);
  EXPECT_EQ(TakeReport(), "CPOSArray::GetAt subscript failed");
}

// Many more paths than anything can follow lead to what is nested deeper: a stream that fails ends
// the writing all the same.
TEST_F(FailingTest, AStreamThatFailsAmongManyPaths) {
  Object object = Read("[]");
  for (int level = 0; level < 130; ++level) {
    const Object inner = std::exchange(object, Read(level % 2 == 0 ? "[]" : "<>"));
    Hold(object, "a", inner);
    if (level < 50) Hold(object, "b", inner);
  }
  const Object stream = NewMemory();
  FailFrom(HostCall::kWrite, 100);
  Serialize(stream, object);
  EXPECT_TRUE(Fired());
  StopFaults();
  EXPECT_EQ(TakeReports().size(), 1u);
}

TEST_F(FailingTest, DeepDocumentThatFits) {
  Object deep = Read("[]");
  for (int levels = 1; levels < 2000; ++levels) {
    const Object inner = std::exchange(deep, levels % 3 == 0 ? Read("<>") : Read("[]"));
    Hold(deep, "a", inner);
  }
  EXPECT_TRUE(IsEqual(Deserialize(NewBuffer(Document(deep))), deep));
}

}  // namespace
