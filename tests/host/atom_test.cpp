// SPDX-License-Identifier: MIT
#include <set>

#include "TestHost.h"

namespace {

using KAP_T_MT::KAPResource;

class AtomTest : public HostTest {
 protected:
  void Delete(KAPStringAtom* atom) { fHost.Strings<"DeleteStringAtom">(atom); }
};

TEST_F(AtomTest, EqualTextsAreOneAtom) {
  const std::string built = std::string("ke") + "y";
  KAPStringAtom* a = fHost.Atom("key");
  EXPECT_EQ(a, fHost.Atom(built.c_str()));
  fHost.Strings<"AddRef">(a);
  EXPECT_EQ(fHost.TakeSnapshot().Of(KAPResource::kAtom, "key").fNumber, 3);
  for (int i = 0; i < 3; ++i) Delete(a);
  EXPECT_EQ(fHost.TakeSnapshot().Of(KAPResource::kAtom, "key").fNumber, 0);
}

// Lengths around the steps of the hash and around the longest that a record tells, and texts that
// differ in one byte anywhere.
TEST_F(AtomTest, EveryByteCounts) {
  std::set<KAPStringAtom*> atoms;
  std::size_t made = 0;
  const auto add = [&](const std::string& text) {
    KAPStringAtom* atom = fHost.Atom(text.c_str());
    EXPECT_EQ(fHost.Strings<"GetCString">(atom), text);
    atoms.insert(atom);
    ++made;
  };
  for (std::size_t length = 0; length <= 257; length += length == 50 ? 203 : 1) {
    std::string text(length, 'x');
    add(text);
    for (char& byte : text) {
      byte = '\xFF';
      add(text);
      byte = 'x';
    }
  }
  EXPECT_EQ(atoms.size(), made);
  for (KAPStringAtom* atom : atoms) Delete(atom);
}

#ifdef __SANITIZE_ADDRESS__
// Nothing keeps an atom alive after its last reference, so that AddressSanitizer finds its use.
TEST_F(AtomTest, AUseAfterTheEndIsFound) {
  KAPStringAtom* atom = nullptr;
  for (int i = 0; i < 8; ++i) {  // so often that a cache would have it
    atom = fHost.Atom("word");
    Delete(atom);
  }
  EXPECT_DEATH(fHost.Strings<"AddRef">(atom), "heap-use-after-free");
}
#endif

}  // namespace
