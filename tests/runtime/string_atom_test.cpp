// SPDX-License-Identifier: MIT
#include <unordered_set>

#include "RuntimeTest.h"

namespace {

using namespace KAP_T_MT;
using KAP_T_MT::KAPFault;

class StringAtomTest : public BoundTest {};

TEST_F(StringAtomTest, References) {
  auto references = [&] {
    return fHost.TakeSnapshot().Of(KAP_T_MT::KAPResource::kAtom, "x").fNumber;
  };
  CKAPStringAtom atom("x");
  const CKAPStringAtom copy(atom), added(atom.Handle(), false), again("x");
  const CKAPStringAtom adopted(CKAPStringAtom(copy).Detach(), true);
  EXPECT_EQ(references(), 5);
  EXPECT_EQ(again.Text(), added.Text());
  const CKAPStringAtom moved(std::move(atom));
  EXPECT_EQ(references(), 5);
  atom = copy;
  atom = CKAPStringAtom("other");
  EXPECT_EQ(references(), 5);
  const CKAPStringAtom none(nullptr, false);
  EXPECT_EQ(CKAPStringAtom(none).Text(), nullptr);
  fHost.FailCall(KAPFault::kAtom, 1);
  EXPECT_EQ(Thrown([] { CKAPStringAtom("failing"); }), kBadAlloc);
  HostTap::Clear();
  EXPECT_EQ(Thrown([] { CKAPStringAtom(static_cast<const char*>(nullptr)); }), kBadAlloc);
  EXPECT_EQ(HostTap::TakeCalls(), Log());
}

TEST_F(StringAtomTest, WaysToTakeAHandle) {
  const CKAPStringAtom atom("x");
  const auto handle = [&] { return CKAPStringAtom(atom).Detach(); };  // with a reference
  const BalancedScope balanced(fHost);
  const CKAPStringAtom added(atom.Handle()), adopted(handle(), KAPAdopt()),
      made{TKAPNewHandle(handle())}, older{TKAPNewHandle(handle()), false};
  EXPECT_TRUE(added == atom && adopted == atom && made == atom && older == atom);
  EXPECT_FALSE(atom == CKAPStringAtom("y") || atom == CKAPStringAtom());
  EXPECT_TRUE(CKAPStringAtom() == CKAPStringAtom(nullptr, KAPAdopt()));
  const std::unordered_set<CKAPStringAtom> set = {atom, added, CKAPStringAtom("y"), adopted};
  EXPECT_EQ(set.size(), 2u);
}

// A text that is not terminated, on both sides of the size that is copied on the stack.
TEST_F(StringAtomTest, UnterminatedTexts) {
  const std::string text(200, 'x');
  for (const std::size_t size : {0ul, 1ul, 127ul, 128ul, 129ul}) {
    const CKAPStringAtom atom(std::string_view(text).substr(0, size));
    EXPECT_EQ(std::string(atom.Text()), text.substr(0, size));
  }
  EXPECT_EQ(Thrown([] { CKAPStringAtom(std::string_view("a\0b", 3)); }),
            "a text cannot hold a zero byte");
  EXPECT_STREQ(CKAPStringAtom(std::string_view()).Text(), "");
  fHost.FailBlocksAbove(0);
  EXPECT_EQ(Thrown([&] { CKAPStringAtom{std::string_view(text)}; }), kBadAlloc);
}

TEST_F(StringAtomTest, Join) {
  const CKAPStringAtom texts[] = {CKAPStringAtom("ab"), CKAPStringAtom(""), CKAPStringAtom()};
  const BalancedScope balanced(fHost);
  for (const CKAPStringAtom& left : texts) {
    EXPECT_EQ(Thrown([&] { left + texts[2]; }), "Memory Copy Error||0");
    EXPECT_EQ(Thrown([&] { texts[2] + left; }), "Memory Copy Error||0");
  }
  EXPECT_STREQ((texts[0] + texts[0]).Text(), "abab");
  EXPECT_STREQ((texts[0] + texts[1]).Text(), "ab");
  EXPECT_STREQ((texts[1] + texts[1]).Text(), "");
  for (const KAPFault call : {KAPFault::kBlock, KAPFault::kAtom}) {
    fHost.FailCall(call, 1);
    EXPECT_EQ(Thrown([&] { texts[0] + texts[0]; }), kBadAlloc);
  }
}

// Until the table is loaded again, releasing an atom makes no host call.
TEST_F(StringAtomTest, Close) {
  KAPStringAtom* unreleased = nullptr;
  KAPStringAtom* second = nullptr;
  {
    const CKAPStringAtom atom("x");
    unreleased = atom.Handle();
    CKAPStringAtom::Close();
    HostTap::Clear();
    second = CKAPStringAtom("y").Handle();  // one made afterwards is not released either
    EXPECT_EQ(HostTap::TextsOf("DeleteStringAtom"), std::vector<std::string>());
    HostTap::Clear();
  }
  EXPECT_EQ(HostTap::TakeCalls(), Log());
  MoveCounter(fHost);
  HostTap::Clear();
  CKAPStringAtom(unreleased, true);
  CKAPStringAtom(second, true);
  EXPECT_EQ(HostTap::TextsOf("DeleteStringAtom"), (std::vector<std::string>{"x", "y"}));
}

TEST_F(StringAtomTest, ToHex) {
  const auto hex = [](std::uintptr_t address) {
    return std::string(CKAPStringAtom::ToHex(reinterpret_cast<void*>(address)).Text());
  };
  EXPECT_EQ(hex(0xABC), "0x0000000000000abc");
  EXPECT_EQ(hex(0xFEDCBA9876543210), "0xfedcba9876543210");
}

}  // namespace
