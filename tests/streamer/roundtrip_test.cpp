// SPDX-License-Identifier: MIT
#include <rapidcheck.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "StreamerWorld.h"

// Generated objects come back as they were. RapidCheck prints the seed of what it finds.

namespace {

using namespace KAP_T_MT;
namespace gen = rc::gen;

class RoundTripTest : public StreamerTest {
 protected:
  static std::string AnyText() {
    const auto any = gen::cast<char>(gen::inRange(1, 256));
    const auto awkward = gen::elementOf(std::string("\\\"\n\r\t ]}>`#'\x7f\xff"));
    return *gen::container<std::string>(gen::oneOf(any, awkward));
  }
  static double AnyNumber() {
    const auto bits = gen::map(gen::arbitrary<std::uint64_t>(),
                               [](std::uint64_t value) { return std::bit_cast<double>(value); });
    return *gen::suchThat(gen::oneOf(bits, gen::arbitrary<double>()),
                          [](double value) { return std::isfinite(value); });
  }

  Object Any(int depth) const {
    switch (*gen::inRange(0, depth > 0 ? 6 : 4)) {
      case 0:
        return Number(AnyNumber());
      case 1:
        return Own(Call<POSStringInterface, "NewPOSString">(AnyText().c_str()));
      case 2: {
        auto units =
            *gen::container<std::vector<unsigned short>>(gen::inRange<unsigned short>(1, 65535));
        units.push_back(0);
        return Own(Call<POSUnicodeStringInterface, "NewPOSUnicodeString">(units.data()));
      }
      case 3:
        return BinData(AnyText().c_str(), AnyText() + '\0' + AnyText());
      case 4: {
        Object array = Read("[]");
        for (int count = *gen::inRange(0, 6); count > 0; --count) {
          Call<POSArrayInterface, "Append">(array.get(), Any(depth - 1).get());
        }
        return array;
      }
      default:
        Object dict = Read("<>");
        for (int count = *gen::inRange(0, 6); count > 0; --count) {
          Put(dict, AnyText().c_str(), Any(depth - 1));
        }
        return dict;
    }
  }
};

TEST_F(RoundTripTest, ObjectsComeBack) {
  EXPECT_TRUE(rc::check([this] {
    const BalancedScope balanced(*this);
    const Object object = Any(3);
    const std::string document = Document(object);
    const Object read = Deserialize(NewBuffer(document));
    RC_ASSERT(IsEqual(read, object));
    RC_ASSERT(Show(read) == Show(object));
    RC_ASSERT(Document(read) == document);
  }));
}

TEST_F(RoundTripTest, MegabytesOnAFile) {
  std::string text = "[";
  for (int i = 0; i < 40000; ++i) {
    const std::string number = std::to_string(i);
    text += "<id " + number + " name (record number " + number + ") tags [a b " + number + ".5]>";
  }
  const Object object = Read((text + "]").c_str());

  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
  const std::string path = "/proc/self/fd/" + std::to_string(fileno(file.get()));
  KAPContainer* stream = nullptr;
  ASSERT_EQ((Do<Factory, "NewPositionableFileStream">(&stream, path.c_str(), "w+b")), "");
  const Object onFile = Own(stream);
  Serialize(onFile, object);
  EXPECT_EQ(Contents(onFile), Document(object));
  EXPECT_EQ((Do<KAPRewindableStreamInterface, "Rewind">(onFile.get())), "");
  EXPECT_TRUE(IsEqual(Deserialize(onFile), object));
  EXPECT_EQ(Rest(onFile), "");
}

}  // namespace
