// SPDX-License-Identifier: MIT
#include <functional>
#include <iterator>
#include <memory>
#include <string>

#include "sequence/Steps.h"

using namespace KAP_T_MT;

namespace {

// Chooses the value of a new object and returns what makes it.
std::function<POSObject*()> ChooseFor(Choices& choices, Model& model) {
  switch (model.fType) {
    case kPOSNumber: {
      const double value = choices.Of({0.0, 1.0, -2.5, 1e10, 0.125});
      model.fScalar = NumberText(value);
      return [=] { return Numbers::Call<"NewPOSNumber">(value); };
    }
    case kPOSString: {
      const std::string text =
          choices.Of({"", "x", "two words", "a)\\", "\xFF", "a string of some length"});
      model.fScalar = Quoted(text);
      return [=] { return Strings::Call<"NewPOSString">(text.c_str()); };
    }
    case kPOSUnicodeString: {
      const std::basic_string<unsigned short> units(choices.Below(3), kUnit);
      model.fScalar = UnitsText(units.size());
      return [=] { return UnicodeStrings::Call<"NewPOSUnicodeString">(units.c_str()); };
    }
    case kPOSBinData: {
      const std::string typeName = choices.Of({"", "type"});
      const std::string bytes(choices.Below(40), '\xA5');
      model.fScalar = BytesText(typeName, bytes);
      return [=] {
        return BinDatas::Call<"NewPOSBinData">(
            typeName.c_str(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
      };
    }
    case kPOSRawPointer:
      model.fScalar = kPointerText;
      return [] { return RawPointers::Call<"NewPOSRawPointer">(&gPointee, nullptr); };
    case kPOSArray:
      return [] { return Arrays::Call<"NewPOSArray">(); };
    case kPOSDict:
      break;
  }
  return [] { return Dicts::Call<"NewPOSDict">(); };
}

}  // namespace

void Make(Driver& driver) {
  auto model = std::make_shared<Model>();
  model->fType = kPOSTypes[driver.fChoices.Below(std::size(kPOSTypes))];
  const auto make = ChooseFor(driver.fChoices, *model);
  driver.Add(driver.TryNew(make), model);
}

void Drop(Driver& driver) {
  if (driver.fLives.empty()) return;
  driver.fLives.erase(driver.fLives.begin() + driver.fChoices.Below(driver.fLives.size()));
  Expect(driver.fHarness.TakeReports().empty(), "a release reports nothing");
}
