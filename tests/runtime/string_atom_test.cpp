#include "RuntimeTest.h"

namespace {

using namespace KAP_T_MT;
using KAPHost::Call;

class StringAtomTest : public BoundTest {};

TEST_F(StringAtomTest, References) {
  auto references = [&] { return fHost.TakeSnapshot().Of(KAPHost::Kind::kAtom, "x").fNumber; };
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
  fHost.Refuse(Call::kAtom, 1);
  EXPECT_EQ(Thrown([] { CKAPStringAtom("refused"); }), kBadAlloc);
  EXPECT_EQ(Thrown([] { CKAPStringAtom(static_cast<const char*>(nullptr)); }), kBadAlloc);
}

TEST_F(StringAtomTest, Join) {
  const char* const texts[] = {"ab", "", "c", nullptr};
  auto make = [](const char* text) { return text ? CKAPStringAtom(text) : CKAPStringAtom(); };
  for (const char* left : texts) {
    for (const char* right : texts) {
      SCOPED_TRACE(testing::Message() << (left ? left : "null") << (right ? right : "null"));
      const bool joins = left && right;
      EXPECT_EQ(Thrown([&] {
                  const std::string joined = (make(left) + make(right)).Text();
                  EXPECT_EQ(joined, std::string(left) + right);
                }),
                joins ? "" : "Memory Copy Error||0");
    }
  }
  const BalancedScope balanced(fHost);
  const CKAPStringAtom one("1");
  for (const Call call : {Call::kBlock, Call::kAtom}) {
    fHost.Refuse(call, 1);
    EXPECT_EQ(Thrown([&] { one + one; }), kBadAlloc);
  }
}

TEST_F(StringAtomTest, ToHex) {
  const struct {
    std::uintptr_t address;
    const char* text;
  } rows[] = {{0, "0x0000000000000000"},
              {0xABC, "0x0000000000000abc"},
              {0xFEDCBA9876543210, "0xfedcba9876543210"}};
  for (const auto& row : rows) {
    EXPECT_STREQ(CKAPStringAtom::ToHex(reinterpret_cast<void*>(row.address)).Text(), row.text);
  }
  fHost.Refuse(Call::kAtom, 1);
  EXPECT_EQ(Thrown([] { CKAPStringAtom::ToHex(nullptr); }), kBadAlloc);
}

TEST_F(StringAtomTest, Close) {
  KAPStringAtom* handle = nullptr;
  {
    const CKAPStringAtom kept("kept");
    handle = kept.Handle();
    CKAPStringAtom::Close();
    HostTap::Clear();
  }
  EXPECT_EQ(HostTap::TakeCalls(), Log());
  fHost.Strings<"DeleteStringAtom">(handle);
}

}  // namespace
