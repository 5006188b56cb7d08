// SPDX-License-Identifier: MIT
#include <cstddef>
#include <iterator>
#include <string>

#include "POSValidator.h"
#include "sequence/Steps.h"

using namespace KAP_T_MT;

// The clone of a scalar is the scalar, without another reference.
void Clone(Driver& driver) {
  const Live* const live = driver.Any();
  if (!live) return;
  KAPContainer* const object =
      driver.TryNew([&] { return Objects::Call<"Clone">(live->Object()); });
  if (!live->fModel->IsContainer()) {
    Expect(!object || object == live->Object(), "a scalar is its clone");
  } else if (object) {
    driver.Add(object, CloneOf(live->fModel));
    driver.fLives.back().ExpectSame();
  }
}

void Compare(Driver& driver) {
  const Live* const a = driver.Any();
  const Live* const b = driver.Any();
  if (!a) return;
  bool areEqual = false;
  const bool succeeded =
      driver.Try([&] { areEqual = Objects::Call<"IsEqual">(a->Object(), b->Object()); });
  Expect(!succeeded || areEqual == AreEqual(a->fModel, b->fModel),
         "objects are equal if the models are");
}

void AsText(Driver& driver) {
  const Live* const live = driver.Any();
  if (!live || !All(live->fModel, &HasText)) return;
  const std::string text = Show(live->fModel);
  const auto read = [&] { return ObjectStatics::Call<"CreateFromText">(text.c_str(), nullptr); };
  const Handle handle(driver.TryNew(read), KAPAdopt());
  Expect(!handle.Handle() || AreSame(handle.Handle(), live->fModel), "a text is its object");
}

void AsDocument(Driver& driver) {
  const Live* const live = driver.Any();
  if (!live || !All(live->fModel, &HasDocument)) return;
  const CPOSObject object(live->Object());
  const CKAPPositionableStream stream;
  if (!driver.Try([&] { driver.fHarness.Streamer().Serialize(stream, object); })) return;
  CPOSObject read;
  CKAPPositionableStream document = driver.fHarness.Stream(Harness::Contents(stream));
  const bool isRead = driver.Try([&] { read = driver.fHarness.Streamer().Deserialize(document); });
  Expect(isRead ? AreSame(read.Handle(), live->fModel) : read.IsNull(), "a document is its object");
}

namespace {

// In the order of kPOSTypes.
constexpr const char* kCategories[] = {"real",
                                       "string",
                                       "unicodestring",
                                       "bindata",
                                       "rawptr",
                                       "array",
                                       "dict keytype string valuetype any"};
static_assert(std::size(kCategories) == std::size(kPOSTypes));

void Validate(Driver& driver) {
  const Live* const live = driver.Any();
  if (!live) return;
  const unsigned kind = driver.fChoices.Below(std::size(kCategories));
  const std::string text = std::string("< T < category ") + kCategories[kind] + " > >";
  const CPOSObject object(live->Object());
  bool isValid = false;
  const bool succeeded = driver.Try([&] {
    const CPOSDict schema(CPOSObject::CreateFromText(text.c_str(), nullptr), false);
    isValid = CPOSStructValidator(schema).Validate(object, "T", nullptr);
  });
  Expect(!succeeded || isValid == (live->fModel->fType == kPOSTypes[kind]),
         "an object is of its kind");
}

// A procedure for another kind reports a failure and changes nothing.
void MisuseKind(Driver& driver) {
  const Live* const live = driver.Any();
  if (!live || live->fModel->IsContainer()) return;
  Arrays::Call<"Append">(live->Object(), live->Object());
  const CKAPStringAtom key("a");
  Dicts::Call<"Put">(live->Object(), key.Handle(), live->Object());
  Expect(driver.fHarness.TakeReports().size() == 2, "each misuse is reported");
  live->ExpectSame();
}

}  // namespace

void ValidateOrMisuse(Driver& driver) {
  driver.fChoices.Below(2) ? Validate(driver) : MisuseKind(driver);
}
