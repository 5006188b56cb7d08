// SPDX-License-Identifier: MIT
#include "Threads.h"
#include "POSStreamer.h"
#include "World.h"

namespace {

using namespace KAP_T_MT;

constexpr const char* kForeign = "ComesAndGoes";

// Threads share one document that does not change, an atom, an error, a streamer and an object of
// another component, and use them through procedures and wrappers. Meanwhile the other component
// comes and goes, which moves the counter and makes every table stale.
class SoakTest : public WrapperTest {
 protected:
  SoakTest() { ComeAndGo(); }

  void ComeAndGo() {
    Unregister(kForeign);
    const auto entries = POSObjectInterface::Registration(
        [](POSObject* object) { return object; }, [](POSObject* a, POSObject* b) { return a == b; },
        [](POSObject*) { return 99; });
    for (const auto& entry : entries) {
      Register(kForeign, entry.fMethodName, entry.fProcName, entry.fProc);
    }
  }

  void UseDocument(int thread) const {
    const Object clone = Own(Call<POSObjectInterface, "Clone">(fDocument.get()));
    ASSERT_TRUE(IsEqual(clone, fDocument));
    ASSERT_EQ(Show(DeepGet(fDocument, "k7.list[1]")), "2");
    const CPOSDict dict(CPOSObject(fDocument.get()), false);
    ASSERT_EQ(dict.NumKeys(), 20u);
    ASSERT_EQ(dict.DeepGetNumber("k3.number", false).Get(), 5);
    ASSERT_TRUE(dict["k1"].Clone().IsEqual(dict["k2"]));
    CPOSArray own = CPOSArray::New();
    for (int i = 0; i < 10; ++i) own.Append(CPOSNumber(thread));
    ASSERT_TRUE(own.IsEqual(own.Clone()));
  }
  void UseStreamer() const {
    CKAPPositionableStream stream;
    fStreamer.Serialize(stream, CPOSObject(fDocument.get()));
    stream.Rewind();
    ASSERT_EQ(Show(fStreamer.Deserialize(stream).Handle()), fShown);
  }
  void UseHandles() const {
    ASSERT_TRUE(CKAPError(fError).Matches("shared", 7));
    ASSERT_EQ(CKAPStringAtom(fAtom).Text(), CKAPStringAtom("shared").Text());
  }
  // The methods are there, or are not for a moment.
  void UseForeign() const {
    try {
      ASSERT_EQ(CPOSObject(fForeign.get()).GetType(), 99);
    } catch (const CKAPError& error) {
      ASSERT_STREQ(error.what(), "invalid container");
    }
  }

  static std::string Text() {
    std::string text = "<";
    for (int i = 0; i < 20; ++i) {
      text += " k" + std::to_string(i) + " < number 5 words [(one) two `0041`] list [[1] 2] >";
    }
    return text + ">";
  }

  const Object fDocument = Read(Text().c_str());
  const std::string fShown = Show(fDocument);
  const Object fForeign = Foreign(kForeign);
  const CKAPStringAtom fAtom{"shared"};
  const CKAPError fError{"message", "shared", 7};
  const CPOSStreamer fStreamer = CPOSStreamer::New();
};

TEST_F(SoakTest, ThreadsShareEverything) {
  Soak(
      [this](int thread) {
        UseDocument(thread);
        UseStreamer();
        UseHandles();
        UseForeign();
      },
      [this] { ComeAndGo(); });
  EXPECT_EQ(Show(fDocument), fShown);
  Unregister(kForeign);
}

}  // namespace
