// Random sequences of registered procedures on a few live handles. A simple model says what each
// call must do. At some calls the host fails one of its own: then the call does everything, or
// reports a failure and does nothing.

#include <charconv>
#include <cstring>
#include <iterator>

#include "Choices.h"
#include "Harness.h"
#include "Model.h"
#include "POSValidator.h"

namespace {

using namespace KAP_T_MT;

using Handle = KAPContainerBaseGeneric;
using Objects = TKAPInterfaceClient<POSObjectInterface>;
using Numbers = TKAPInterfaceClient<POSNumberInterface>;
using Strings = TKAPInterfaceClient<POSStringInterface>;
using UnicodeStrings = TKAPInterfaceClient<POSUnicodeStringInterface>;
using BinDatas = TKAPInterfaceClient<POSBinDataInterface>;
using RawPointers = TKAPInterfaceClient<POSRawPointerInterface>;
using Arrays = TKAPInterfaceClient<POSArrayInterface>;
using Dicts = TKAPInterfaceClient<POSDictInterface>;
using Iterators = TKAPInterfaceClient<POSDictIteratorInterface>;

constexpr std::size_t kMaxHandles = 6;
constexpr std::size_t kMaxSize = 1000;  // of a value; shared parts can make it grow very fast
constexpr int kMaxSteps = 300;

struct Live {
  Handle fHandle;
  ModelRef fModel;
};

int gPointee = 0;

// Compares an object with its model, part by part.
void ExpectSame(POSObject* object, const ModelRef& model) {
  Expect(!object == !model, "an object is where the model has one");
  if (!object) return;
  Expect(Objects::Call<"GetType">(object) == model->fType, "the kinds are the same");
  const auto expect = [](bool isTrue) { Expect(isTrue, "the values are the same"); };
  switch (model->fType) {
    case kPOSNumber:
      return expect(Numbers::Call<"Get">(object) == model->fNumber);
    case kPOSString:
      return expect(Strings::Call<"Get">(object) == model->fText);
    case kPOSUnicodeString:
      return expect(UnicodeStrings::Call<"Get">(object) == model->fUnits);
    case kPOSBinData: {
      const std::size_t size = BinDatas::Call<"GetSize">(object);
      const unsigned char* const data = BinDatas::Call<"GetBinData">(object);
      expect(BinDatas::Call<"GetTypeName">(object) == model->fText);
      return expect(size == model->fBytes.size() &&
                    (size == 0 || std::memcmp(data, model->fBytes.data(), size) == 0));
    }
    case kPOSRawPointer:
      return expect(RawPointers::Call<"GetRawPointer">(object) == model->fPointer);
    case kPOSArray: {
      expect(Arrays::Call<"Count">(object) == model->fElements.size());
      for (std::size_t i = 0; i <= model->fElements.size(); ++i) {
        const Handle element(Arrays::Call<"GetAt">(object, i), KAPAdopt());
        ExpectSame(element.Handle(), i < model->fElements.size() ? model->fElements[i] : nullptr);
      }
      return;
    }
    case kPOSDict: {
      const Handle iterator(Iterators::Call<"NewPOSDictIterator">(object), KAPAdopt());
      for (const auto& [key, entry] : model->fEntries) {
        expect(!Iterators::Call<"IsDone">(iterator.Handle()));
        expect(Iterators::Call<"CurKey">(iterator.Handle()) == key);
        const CKAPStringAtom atom(key.c_str());
        const Handle value(Dicts::Call<"Get">(object, atom.Handle()), KAPAdopt());
        ExpectSame(value.Handle(), entry);
        Iterators::Call<"Next">(iterator.Handle());
      }
      return expect(Iterators::Call<"IsDone">(iterator.Handle()));
    }
  }
  Expect(false, "the kind is known");
}

class Sequence {
 public:
  Sequence(std::string_view input, Harness& harness) : fChoices(input), fHarness(harness) {}

  void Run() {
    for (int i = 0; i < kMaxSteps && !fChoices.IsEmpty(); ++i) Step();
    for (const Live& live : fLives) ExpectSame(live.fHandle.Handle(), live.fModel);
  }

 private:
  enum class Result { kDone, kFailed };

  void Step();
  void Make();
  void Append();
  void SetAt();
  void RemoveAt();
  void Put();
  void RemoveKey();
  void GetAt();
  void DeepGet();
  void Clone();
  void Compare();
  void AsText();
  void AsDocument();
  void Validate();
  void MisuseKind();
  void Drop();

  // Runs a call, some of them with a failing call of the host.
  template <class Call>
  Result Try(Call call);

  Live* Any() { return fLives.empty() ? nullptr : &fLives[fChoices.Below(fLives.size())]; }
  Live* Any(POSType type) {
    Live* const live = Any();
    return live && live->fModel->fType == type ? live : nullptr;
  }
  // A value to put into the container; null if it contains the container or is too large.
  Live* ValueFor(const Live& container);
  void Add(KAPContainer* object, ModelRef model);
  std::string Key() { return fChoices.Of({"a", "b", "aa", "", "two words", "c"}); }

  Choices fChoices;
  Harness& fHarness;
  std::vector<Live> fLives;
  bool fHasFired = false;  // in the last Try
};

template <class Call>
Sequence::Result Sequence::Try(Call call) {
  KAPHost::Host& host = fHarness.Host();
  if (fChoices.Below(4) == 3) host.FailCall(KAPFault::kAny, 1 + fChoices.Below(12));
  bool hasThrown = false;
  try {
    call();
  } catch (const std::exception&) {
    hasThrown = true;
  }
  fHasFired = host.Fired();
  host.StopFaults();
  const bool hasFailed = !fHarness.TakeReports().empty() || hasThrown;
  Expect(fHasFired || !hasFailed, "a call without a fault does not fail");
  return hasFailed ? Result::kFailed : Result::kDone;
}

void Sequence::Step() {
  switch (fChoices.Below(16)) {
    case 0:
    case 1:
      return Make();
    case 2:
      return Append();
    case 3:
      return SetAt();
    case 4:
      return RemoveAt();
    case 5:
    case 6:
      return Put();
    case 7:
      return RemoveKey();
    case 8:
      return GetAt();
    case 9:
      return DeepGet();
    case 10:
      return Clone();
    case 11:
      return Compare();
    case 12:
      return AsText();
    case 13:
      return AsDocument();
    case 14:
      return fChoices.Below(2) ? Validate() : MisuseKind();
    default:
      return Drop();
  }
}

void Sequence::Add(KAPContainer* object, ModelRef model) {
  Handle handle(object, KAPAdopt());
  if (fLives.size() == kMaxHandles) fLives.erase(fLives.begin());
  fLives.push_back({std::move(handle), std::move(model)});
}

void Sequence::Make() {
  auto model = std::make_shared<Model>();
  model->fType = kPOSTypes[fChoices.Below(std::size(kPOSTypes))];
  switch (model->fType) {
    case kPOSNumber:
      model->fNumber = fChoices.Of({0.0, 1.0, -2.5, 1e10, 0.125});
      break;
    case kPOSString:
      model->fText = fChoices.Of({"", "x", "two words", "a)\\", "\xFF", "a string of some length"});
      break;
    case kPOSUnicodeString:
      model->fUnits.assign(fChoices.Below(3), 0x20AC);
      break;
    case kPOSBinData:
      model->fText = fChoices.Of({"", "type"});
      model->fBytes.assign(fChoices.Below(40), 0xA5);
      break;
    case kPOSRawPointer:
      model->fPointer = &gPointee;
      break;
    case kPOSArray:
    case kPOSDict:
      break;
  }
  KAPContainer* object = nullptr;
  const Result result = Try([&] {
    switch (model->fType) {
      case kPOSNumber:
        object = Numbers::Call<"NewPOSNumber">(model->fNumber);
        break;
      case kPOSString:
        object = Strings::Call<"NewPOSString">(model->fText.c_str());
        break;
      case kPOSUnicodeString:
        object = UnicodeStrings::Call<"NewPOSUnicodeString">(model->fUnits.c_str());
        break;
      case kPOSBinData:
        object = BinDatas::Call<"NewPOSBinData">(model->fText.c_str(), model->fBytes.data(),
                                                 model->fBytes.size());
        break;
      case kPOSRawPointer:
        object = RawPointers::Call<"NewPOSRawPointer">(&gPointee, nullptr);
        break;
      case kPOSArray:
        object = Arrays::Call<"NewPOSArray">();
        break;
      case kPOSDict:
        object = Dicts::Call<"NewPOSDict">();
        break;
    }
  });
  Expect(!object == (result == Result::kFailed), "a failure returns null");
  if (object) Add(object, model);
}

Live* Sequence::ValueFor(const Live& container) {
  Live* const value = Any();
  if (!value || Contains(value->fModel, container.fModel)) return nullptr;
  const std::size_t size = SizeOf(value->fModel, kMaxSize);
  for (const Live& live : fLives) {
    if (SizeOf(live.fModel, kMaxSize) * (size + 1) >= kMaxSize) return nullptr;
  }
  return value;
}

void Sequence::Append() {
  Live* const array = Any(kPOSArray);
  Live* const value = array ? ValueFor(*array) : nullptr;
  if (!value) return;
  const Result result =
      Try([&] { Arrays::Call<"Append">(array->fHandle.Handle(), value->fHandle.Handle()); });
  if (result == Result::kDone) array->fModel->fElements.push_back(value->fModel);
  ExpectSame(array->fHandle.Handle(), array->fModel);
}

void Sequence::SetAt() {
  Live* const array = Any(kPOSArray);
  Live* const value = array ? ValueFor(*array) : nullptr;
  if (!value) return;
  const std::size_t index = fChoices.Below(12);
  const Result result =
      Try([&] { Arrays::Call<"SetAt">(array->fHandle.Handle(), index, value->fHandle.Handle()); });
  auto& elements = array->fModel->fElements;
  if (result == Result::kDone) {
    if (elements.size() <= index) elements.resize(index + 1);
    elements[index] = value->fModel;
  }
  ExpectSame(array->fHandle.Handle(), array->fModel);
}

void Sequence::RemoveAt() {
  Live* const array = Any(kPOSArray);
  if (!array) return;
  const std::size_t index = fChoices.Below(12);
  const Result result = Try([&] { Arrays::Call<"Remove">(array->fHandle.Handle(), index); });
  auto& elements = array->fModel->fElements;
  if (result == Result::kDone && index < elements.size()) {
    elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(index));
  }
  ExpectSame(array->fHandle.Handle(), array->fModel);
}

void Sequence::Put() {
  Live* const dict = Any(kPOSDict);
  Live* const value = dict ? ValueFor(*dict) : nullptr;
  if (!value) return;
  const std::string key = Key();
  const Result result = Try([&] {
    const CKAPStringAtom atom(key.c_str());
    Dicts::Call<"Put">(dict->fHandle.Handle(), atom.Handle(), value->fHandle.Handle());
  });
  if (result == Result::kDone) dict->fModel->fEntries[key] = value->fModel;
  ExpectSame(dict->fHandle.Handle(), dict->fModel);
}

void Sequence::RemoveKey() {
  Live* const dict = Any(kPOSDict);
  if (!dict) return;
  const std::string key = Key();
  const Result result = Try([&] {
    const CKAPStringAtom atom(key.c_str());
    Dicts::Call<"Remove">(dict->fHandle.Handle(), atom.Handle());
  });
  if (result == Result::kDone) dict->fModel->fEntries.erase(key);
  ExpectSame(dict->fHandle.Handle(), dict->fModel);
}

// The part becomes a live handle too, so that later steps change what containers share.
void Sequence::GetAt() {
  Live* const array = Any(kPOSArray);
  if (!array) return;
  const std::size_t index = fChoices.Below(12);
  const auto& elements = array->fModel->fElements;
  const ModelRef model = index < elements.size() ? elements[index] : nullptr;
  KAPContainer* object = nullptr;
  const Result result =
      Try([&] { object = Arrays::Call<"GetAt">(array->fHandle.Handle(), index); });
  Expect(!object == (!model || result == Result::kFailed), "the slot has its value");
  if (object) Add(object, model);
}

void Sequence::DeepGet() {
  Live* const dict = Any(kPOSDict);
  if (!dict) return;
  std::string path;
  ModelRef model = dict->fModel;
  for (unsigned depth = 1 + fChoices.Below(3); depth > 0; --depth) {
    if (fChoices.Below(3) == 0) {
      const std::size_t index = fChoices.Below(3);
      path += "[" + std::to_string(index) + "]";
      const bool isThere =
          model && model->fType == kPOSArray && index < model->fElements.size() && depth > 0;
      model = isThere ? model->fElements[index] : nullptr;
    } else {
      const std::string key = fChoices.Of({"a", "b", "aa", "two words"});
      path += "." + key;
      const bool isDict = model && model->fType == kPOSDict;
      const auto entry = isDict ? model->fEntries.find(key) : dict->fModel->fEntries.end();
      model = isDict && entry != model->fEntries.end() ? entry->second : nullptr;
    }
  }
  if (path.front() == '[') return;  // an index is not a first segment
  KAPContainer* object = nullptr;
  Try([&] {
    const CKAPStringAtom atom(path.c_str());
    object = Dicts::Call<"DeepGet">(dict->fHandle.Handle(), atom.Handle());
  });
  // Every failure on the way means that the path has no value, deliberately.
  Expect(object ? model != nullptr : !model || fHasFired, "the path has its value");
  if (object) Add(object, model);
}

// The clone of a scalar is the scalar, without another reference.
void Sequence::Clone() {
  Live* const live = Any();
  if (!live) return;
  KAPContainer* object = nullptr;
  const Result result = Try([&] { object = Objects::Call<"Clone">(live->fHandle.Handle()); });
  Expect(!object == (result == Result::kFailed), "a failure returns null");
  if (!live->fModel->IsContainer()) {
    Expect(!object || object == live->fHandle.Handle(), "a scalar is its clone");
  } else if (object) {
    Add(object, CloneOf(live->fModel));
    ExpectSame(fLives.back().fHandle.Handle(), fLives.back().fModel);
  }
}

void Sequence::Compare() {
  Live* const a = Any();
  Live* const b = Any();
  if (!a) return;
  bool areEqual = false;
  const Result result =
      Try([&] { areEqual = Objects::Call<"IsEqual">(a->fHandle.Handle(), b->fHandle.Handle()); });
  Expect(result == Result::kFailed || areEqual == AreEqual(a->fModel, b->fModel),
         "objects are equal if the models are");
}

bool HasText(const ModelRef& model) {
  return model && model->fType != kPOSBinData && model->fType != kPOSRawPointer;
}

void AppendText(std::string& out, const ModelRef& model) {
  const auto appendString = [&out](const std::string& text) {
    out += " (";
    for (const char each : text) {
      if (each == '\\' || each == ')') out += '\\';
      out += each;
    }
    out += ")";
  };
  char digits[40];
  switch (model->fType) {
    case kPOSNumber:
      out += ' ';
      out.append(digits, std::to_chars(digits, digits + sizeof digits, model->fNumber,
                                       std::chars_format::fixed)
                             .ptr);
      break;
    case kPOSString:
      appendString(model->fText);
      break;
    case kPOSUnicodeString:
      out += " `";
      for (std::size_t i = 0; i < model->fUnits.size(); ++i) out += "20AC";
      out += '`';
      break;
    case kPOSArray:
      out += " [";
      for (const ModelRef& element : model->fElements) AppendText(out, element);
      out += " ]";
      break;
    case kPOSDict:
      out += " <";
      for (const auto& [key, entry] : model->fEntries) {
        appendString(key);
        AppendText(out, entry);
      }
      out += " >";
      break;
    case kPOSBinData:
    case kPOSRawPointer:
      Expect(false, "text notation has the kind");
  }
}

void Sequence::AsText() {
  Live* const live = Any();
  if (!live || !All(live->fModel, &HasText)) return;
  std::string text;
  AppendText(text, live->fModel);
  KAPContainer* object = nullptr;
  const Result result = Try([&] {
    object = TKAPInterfaceClient<POSObjectStatics>::Call<"CreateFromText">(text.c_str(), nullptr);
  });
  Expect(!object == (result == Result::kFailed), "a text is the object it was made from");
  const Handle handle(object, KAPAdopt());
  if (object) ExpectSame(object, live->fModel);
}

bool HasDocument(const ModelRef& model) { return model && model->fType != kPOSRawPointer; }

void Sequence::AsDocument() {
  Live* const live = Any();
  if (!live || !All(live->fModel, &HasDocument)) return;
  const CPOSObject object(live->fHandle.Handle());
  const CKAPPositionableStream stream;
  const Result result = Try([&] { fHarness.Streamer().Serialize(stream, object); });
  if (result == Result::kFailed) return;
  CPOSObject read;
  CKAPPositionableStream document = fHarness.Stream(Harness::Contents(stream));
  const Result reading = Try([&] { read = fHarness.Streamer().Deserialize(document); });
  Expect(read.IsNull() == (reading == Result::kFailed), "a document can be read");
  if (!read.IsNull()) ExpectSame(read.Handle(), live->fModel);
}

void Sequence::Validate() {
  Live* const live = Any();
  if (!live) return;
  constexpr const char* kCategories[] = {"real",
                                         "string",
                                         "unicodestring",
                                         "bindata",
                                         "rawptr",
                                         "array",
                                         "dict keytype string valuetype any"};
  static_assert(std::size(kCategories) == std::size(kPOSTypes));
  const unsigned category = fChoices.Below(std::size(kPOSTypes));
  const std::string text = std::string("< T < category ") + kCategories[category] + " > >";
  const CPOSObject object(live->fHandle.Handle());
  bool isValid = false;
  const Result result = Try([&] {
    const CPOSDict schema(CPOSObject::CreateFromText(text.c_str(), nullptr), false);
    isValid = CPOSStructValidator(schema).Validate(object, "T", nullptr);
  });
  Expect(result == Result::kFailed || isValid == (live->fModel->fType == kPOSTypes[category]),
         "an object is of its kind");
}

// A procedure for another kind reports a failure and changes nothing.
void Sequence::MisuseKind() {
  Live* const live = Any();
  if (!live || live->fModel->IsContainer()) return;
  Arrays::Call<"Append">(live->fHandle.Handle(), live->fHandle.Handle());
  const CKAPStringAtom key("a");
  Dicts::Call<"Put">(live->fHandle.Handle(), key.Handle(), live->fHandle.Handle());
  Expect(fHarness.TakeReports().size() == 2, "each misuse is reported");
  ExpectSame(live->fHandle.Handle(), live->fModel);
}

void Sequence::Drop() {
  if (fLives.empty()) return;
  fLives.erase(fLives.begin() + fChoices.Below(fLives.size()));
  Expect(fHarness.TakeReports().empty(), "a release reports nothing");
}

}  // namespace

KAP_FUZZ_TARGET(input, harness) { Sequence(input, harness).Run(); }
