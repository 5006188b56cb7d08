// SPDX-License-Identifier: MIT

// Random sequences of registered procedures on a few live handles. A simple model says what each
// call must do. At some calls the host fails one of its own: then the call does everything, or
// reports a failure and does nothing.

#include <functional>
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
constexpr unsigned kMaxIndex = 12;
constexpr unsigned short kUnit = 0x20AC;

// In the order of kPOSTypes.
constexpr const char* kCategories[] = {"real",
                                       "string",
                                       "unicodestring",
                                       "bindata",
                                       "rawptr",
                                       "array",
                                       "dict keytype string valuetype any"};
static_assert(std::size(kCategories) == std::size(kPOSTypes));

int gPointee = 0;

// ---- What objects hold, as text: the text notation, as far as there is one ----

std::string Quoted(const std::string& text) {
  std::string quoted = "(";
  for (const char each : text) {
    if (each == '\\' || each == ')') quoted += '\\';
    quoted += each;
  }
  return quoted + ") ";
}

std::string UnitsText(std::size_t count) {
  std::string text;
  while (count-- > 0) text += "20AC";
  return '`' + text + '`';
}

std::string BytesText(const std::string& typeName, const std::string& bytes) {
  return typeName + ':' + bytes + ' ';
}

constexpr const char kEmptySlot[] = "~ ";
constexpr const char kPointer[] = "* ";

std::string Show(const ModelRef& model) {
  if (!model) return kEmptySlot;
  std::string parts;
  for (const ModelRef& element : model->fElements) parts += Show(element);
  for (const auto& [key, entry] : model->fEntries) parts += Quoted(key) + Show(entry);
  if (model->fType == kPOSArray) return '[' + parts + "] ";
  return model->fType == kPOSDict ? '<' + parts + "> " : model->fScalar;
}

std::string Show(POSObject* object) {
  if (!object) return kEmptySlot;
  std::string parts;
  switch (static_cast<POSType>(Objects::Call<"GetType">(object))) {
    case kPOSNumber:
      return std::to_string(Numbers::Call<"Get">(object)) + ' ';
    case kPOSString:
      return Quoted(Strings::Call<"Get">(object));
    case kPOSUnicodeString: {
      const std::basic_string<unsigned short> units = UnicodeStrings::Call<"Get">(object);
      Expect(units.find_first_not_of(kUnit) == units.npos, "a Unicode string has its units");
      return UnitsText(units.size());
    }
    case kPOSBinData: {
      const auto* bytes = reinterpret_cast<const char*>(BinDatas::Call<"GetBinData">(object));
      const std::size_t size = BinDatas::Call<"GetSize">(object);
      return BytesText(BinDatas::Call<"GetTypeName">(object), {bytes, bytes + size});
    }
    case kPOSRawPointer:
      Expect(RawPointers::Call<"GetRawPointer">(object) == &gPointee, "a pointer is as it was");
      return kPointer;
    case kPOSArray:
      for (std::size_t i = 0; i < Arrays::Call<"Count">(object); ++i) {
        parts += Show(Handle(Arrays::Call<"GetAt">(object, i), KAPAdopt()).Handle());
      }
      return '[' + parts + "] ";
    case kPOSDict: {
      const Handle iterator(Iterators::Call<"NewPOSDictIterator">(object), KAPAdopt());
      for (; !Iterators::Call<"IsDone">(iterator.Handle());
           Iterators::Call<"Next">(iterator.Handle())) {
        const CKAPStringAtom key(Iterators::Call<"CurKey">(iterator.Handle()));
        parts += Quoted(key.Text());
        parts += Show(Handle(Dicts::Call<"Get">(object, key.Handle()), KAPAdopt()).Handle());
      }
      return '<' + parts + "> ";
    }
  }
  return "a kind that there is not";
}

bool AreSame(POSObject* object, const ModelRef& model) { return Show(object) == Show(model); }

bool HasDocument(const ModelRef& model) { return model && model->fType != kPOSRawPointer; }
bool HasText(const ModelRef& model) { return HasDocument(model) && model->fType != kPOSBinData; }

// ---- The operations ----

class Sequence {
 public:
  Sequence(std::string_view input, Harness& harness) : fChoices(input), fHarness(harness) {}

  void Run() {
    for (int i = 0; i < kMaxSteps && !fChoices.IsEmpty(); ++i) {
      (this->*kOperations[fChoices.Below(std::size(kOperations))])();
    }
    for (const Live& live : fLives) live.ExpectSame();
  }

 private:
  struct Live {
    POSObject* Object() const { return fHandle.Handle(); }
    void ExpectSame() const { Expect(AreSame(Object(), fModel), "an object is as its model"); }

    Handle fHandle;
    ModelRef fModel;
  };

  static void (Sequence::*const kOperations[16])();

  // Runs a call, sometimes with a failing call of the host. Returns whether it succeeded.
  template <class Call>
  bool Try(Call call) {
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
    return !hasFailed;
  }

  // The same for a call that returns a new object.
  template <class Call>
  KAPContainer* TryNew(Call call) {
    KAPContainer* object = nullptr;
    const bool succeeded = Try([&] { object = call(); });
    Expect(!object == !succeeded, "a failure returns null");
    return object;
  }

  // The same for a call that changes a container, and its effect on the model.
  template <class Call, class Effect>
  void Change(Live& live, Call call, Effect effect) {
    if (Try([&] { call(live.Object()); })) effect(*live.fModel);
    live.ExpectSame();
  }

  Live* Any() { return fLives.empty() ? nullptr : &fLives[fChoices.Below(fLives.size())]; }
  Live* Any(POSType type) {
    Live* const live = Any();
    return live && live->fModel->fType == type ? live : nullptr;
  }
  // A value to put into the container; null if it contains the container or is too large.
  Live* ValueFor(const Live* container) {
    Live* const value = container ? Any() : nullptr;
    if (!value || Contains(value->fModel, container->fModel)) return nullptr;
    const std::size_t size = SizeOf(value->fModel, kMaxSize);
    for (const Live& live : fLives) {
      if (SizeOf(live.fModel, kMaxSize) * (size + 1) >= kMaxSize) return nullptr;
    }
    return value;
  }
  std::string AnyKey() { return fChoices.Of({"a", "b", "aa", "", "two words", "c"}); }

  // Without an object it does nothing. The oldest live object makes room.
  void Add(KAPContainer* object, ModelRef model) {
    if (!object) return;
    Handle handle(object, KAPAdopt());
    if (fLives.size() == kMaxHandles) fLives.erase(fLives.begin());
    fLives.push_back({std::move(handle), std::move(model)});
  }

  // Chooses the value of a new object and returns what makes it.
  std::function<POSObject*()> ChooseFor(Model& model) {
    switch (model.fType) {
      case kPOSNumber: {
        const double value = fChoices.Of({0.0, 1.0, -2.5, 1e10, 0.125});
        model.fScalar = std::to_string(value) + ' ';
        return [=] { return Numbers::Call<"NewPOSNumber">(value); };
      }
      case kPOSString: {
        const std::string text =
            fChoices.Of({"", "x", "two words", "a)\\", "\xFF", "a string of some length"});
        model.fScalar = Quoted(text);
        return [=] { return Strings::Call<"NewPOSString">(text.c_str()); };
      }
      case kPOSUnicodeString: {
        const std::basic_string<unsigned short> units(fChoices.Below(3), kUnit);
        model.fScalar = UnitsText(units.size());
        return [=] { return UnicodeStrings::Call<"NewPOSUnicodeString">(units.c_str()); };
      }
      case kPOSBinData: {
        const std::string typeName = fChoices.Of({"", "type"});
        const std::string bytes(fChoices.Below(40), '\xA5');
        model.fScalar = BytesText(typeName, bytes);
        return [=] {
          return BinDatas::Call<"NewPOSBinData">(
              typeName.c_str(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
        };
      }
      case kPOSRawPointer:
        model.fScalar = kPointer;
        return [] { return RawPointers::Call<"NewPOSRawPointer">(&gPointee, nullptr); };
      case kPOSArray:
        return [] { return Arrays::Call<"NewPOSArray">(); };
      case kPOSDict:
        break;
    }
    return [] { return Dicts::Call<"NewPOSDict">(); };
  }

  void Make() {
    auto model = std::make_shared<Model>();
    model->fType = kPOSTypes[fChoices.Below(std::size(kPOSTypes))];
    const auto make = ChooseFor(*model);
    Add(TryNew(make), model);
  }

  void Append() {
    Live* const array = Any(kPOSArray);
    Live* const value = ValueFor(array);
    if (!value) return;
    Change(
        *array, [&](POSObject* object) { Arrays::Call<"Append">(object, value->Object()); },
        [&](Model& model) { model.fElements.push_back(value->fModel); });
  }

  void SetAt() {
    Live* const array = Any(kPOSArray);
    Live* const value = ValueFor(array);
    if (!value) return;
    const std::size_t index = fChoices.Below(kMaxIndex);
    Change(
        *array, [&](POSObject* object) { Arrays::Call<"SetAt">(object, index, value->Object()); },
        [&](Model& model) {
          if (model.fElements.size() <= index) model.fElements.resize(index + 1);
          model.fElements[index] = value->fModel;
        });
  }

  void RemoveAt() {
    Live* const array = Any(kPOSArray);
    if (!array) return;
    const unsigned index = fChoices.Below(kMaxIndex);
    Change(
        *array, [&](POSObject* object) { Arrays::Call<"Remove">(object, index); },
        [&](Model& model) {
          auto& elements = model.fElements;
          if (index < elements.size()) elements.erase(elements.begin() + index);
        });
  }

  void Put() {
    Live* const dict = Any(kPOSDict);
    Live* const value = ValueFor(dict);
    if (!value) return;
    const std::string key = AnyKey();
    const auto put = [&](POSObject* object) {
      const CKAPStringAtom atom(key.c_str());
      Dicts::Call<"Put">(object, atom.Handle(), value->Object());
    };
    Change(*dict, put, [&](Model& model) { model.fEntries[key] = value->fModel; });
  }

  void RemoveKey() {
    Live* const dict = Any(kPOSDict);
    if (!dict) return;
    const std::string key = AnyKey();
    const auto remove = [&](POSObject* object) {
      const CKAPStringAtom atom(key.c_str());
      Dicts::Call<"Remove">(object, atom.Handle());
    };
    Change(*dict, remove, [&](Model& model) { model.fEntries.erase(key); });
  }

  // The part becomes a live handle too, so that later steps change what containers share.
  void GetAt() {
    const Live* const array = Any(kPOSArray);
    if (!array) return;
    const std::size_t index = fChoices.Below(kMaxIndex);
    const auto& elements = array->fModel->fElements;
    const ModelRef model = index < elements.size() ? elements[index] : nullptr;
    KAPContainer* object = nullptr;
    const bool succeeded = Try([&] { object = Arrays::Call<"GetAt">(array->Object(), index); });
    Expect(!object == (!model || !succeeded), "the slot has its value");
    Add(object, model);
  }

  void DeepGet() {
    const Live* const dict = Any(kPOSDict);
    if (!dict) return;
    std::string path;
    ModelRef model = dict->fModel;
    for (unsigned depth = 1 + fChoices.Below(3); depth > 0; --depth) {
      ModelRef next;
      if (fChoices.Below(3) == 0) {
        const std::size_t index = fChoices.Below(3);
        path += "[" + std::to_string(index) + "]";
        if (model && index < model->fElements.size()) next = model->fElements[index];
      } else {
        const std::string key = fChoices.Of({"a", "b", "aa", "two words"});
        path += "." + key;
        if (model && model->fEntries.count(key) > 0) next = model->fEntries[key];
      }
      model = next;
    }
    if (path.front() == '[') return;  // an index is not a first segment
    KAPContainer* object = nullptr;
    Try([&] {
      const CKAPStringAtom atom(path.c_str());
      object = Dicts::Call<"DeepGet">(dict->Object(), atom.Handle());
    });
    // Every failure on the way means that the path has no value, deliberately.
    Expect(object ? model != nullptr : !model || fHasFired, "the path has its value");
    Add(object, model);
  }

  // The clone of a scalar is the scalar, without another reference.
  void Clone() {
    const Live* const live = Any();
    if (!live) return;
    KAPContainer* const object = TryNew([&] { return Objects::Call<"Clone">(live->Object()); });
    if (!live->fModel->IsContainer()) {
      Expect(!object || object == live->Object(), "a scalar is its clone");
    } else if (object) {
      Add(object, CloneOf(live->fModel));
      fLives.back().ExpectSame();
    }
  }

  void Compare() {
    const Live* const a = Any();
    const Live* const b = Any();
    if (!a) return;
    bool areEqual = false;
    const bool succeeded =
        Try([&] { areEqual = Objects::Call<"IsEqual">(a->Object(), b->Object()); });
    Expect(!succeeded || areEqual == AreEqual(a->fModel, b->fModel),
           "objects are equal if the models are");
  }

  void AsText() {
    const Live* const live = Any();
    if (!live || !All(live->fModel, &HasText)) return;
    const std::string text = Show(live->fModel);
    using Statics = TKAPInterfaceClient<POSObjectStatics>;
    const auto read = [&] { return Statics::Call<"CreateFromText">(text.c_str(), nullptr); };
    const Handle handle(TryNew(read), KAPAdopt());
    Expect(!handle.Handle() || AreSame(handle.Handle(), live->fModel), "a text is its object");
  }

  void AsDocument() {
    const Live* const live = Any();
    if (!live || !All(live->fModel, &HasDocument)) return;
    const CPOSObject object(live->Object());
    const CKAPPositionableStream stream;
    if (!Try([&] { fHarness.Streamer().Serialize(stream, object); })) return;
    CPOSObject read;
    CKAPPositionableStream document = fHarness.Stream(Harness::Contents(stream));
    const bool isRead = Try([&] { read = fHarness.Streamer().Deserialize(document); });
    Expect(isRead ? AreSame(read.Handle(), live->fModel) : read.IsNull(),
           "a document is its object");
  }

  void Validate() {
    const Live* const live = Any();
    if (!live) return;
    const unsigned kind = fChoices.Below(std::size(kCategories));
    const std::string text = std::string("< T < category ") + kCategories[kind] + " > >";
    const CPOSObject object(live->Object());
    bool isValid = false;
    const bool succeeded = Try([&] {
      const CPOSDict schema(CPOSObject::CreateFromText(text.c_str(), nullptr), false);
      isValid = CPOSStructValidator(schema).Validate(object, "T", nullptr);
    });
    Expect(!succeeded || isValid == (live->fModel->fType == kPOSTypes[kind]),
           "an object is of its kind");
  }

  // A procedure for another kind reports a failure and changes nothing.
  void MisuseKind() {
    const Live* const live = Any();
    if (!live || live->fModel->IsContainer()) return;
    Arrays::Call<"Append">(live->Object(), live->Object());
    const CKAPStringAtom key("a");
    Dicts::Call<"Put">(live->Object(), key.Handle(), live->Object());
    Expect(fHarness.TakeReports().size() == 2, "each misuse is reported");
    live->ExpectSame();
  }

  void ValidateOrMisuse() { fChoices.Below(2) ? Validate() : MisuseKind(); }

  void Drop() {
    if (fLives.empty()) return;
    fLives.erase(fLives.begin() + fChoices.Below(fLives.size()));
    Expect(fHarness.TakeReports().empty(), "a release reports nothing");
  }

  Choices fChoices;
  Harness& fHarness;
  std::vector<Live> fLives;
  bool fHasFired = false;  // in the last Try
};

// A choice of the input is a number in this table, which gives its weight to an operation, too. The
// seeds depend on the order.
using S = Sequence;
void (Sequence::*const Sequence::kOperations[16])() = {
    &S::Make,  &S::Make,    &S::Append,    &S::SetAt,      &S::RemoveAt,
    &S::Put,   &S::Put,     &S::RemoveKey, &S::GetAt,      &S::DeepGet,
    &S::Clone, &S::Compare, &S::AsText,    &S::AsDocument, &S::ValidateOrMisuse,
    &S::Drop};

}  // namespace

KAP_FUZZ_TARGET(input, harness) { Sequence(input, harness).Run(); }
