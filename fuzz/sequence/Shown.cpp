// SPDX-License-Identifier: MIT
#include "sequence/Shown.h"

#include "sequence/Procs.h"

using namespace KAP_T_MT;

int gPointee = 0;

std::string NumberText(double value) { return std::to_string(value) + ' '; }

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

namespace {

constexpr const char kEmptySlot[] = "~ ";

std::string ScalarText(POSObject* object, POSType type) {
  switch (type) {
    case kPOSNumber:
      return NumberText(Numbers::Call<"Get">(object));
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
      return kPointerText;
    case kPOSArray:
    case kPOSDict:
      break;
  }
  return "not a scalar";
}

bool HasElements(POSObject* array, const std::vector<ModelRef>& elements) {
  if (Arrays::Call<"Count">(array) != elements.size()) return false;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const Handle element(Arrays::Call<"GetAt">(array, i), KAPAdopt());
    if (!AreSame(element.Handle(), elements[i])) return false;
  }
  return true;
}

bool HasEntries(POSObject* dict, const std::map<std::string, ModelRef>& entries) {
  const Handle iterator(Iterators::Call<"NewPOSDictIterator">(dict), KAPAdopt());
  for (const auto& [key, entry] : entries) {
    if (Iterators::Call<"IsDone">(iterator.Handle())) return false;
    const CKAPStringAtom atom(Iterators::Call<"CurKey">(iterator.Handle()));
    const Handle value(Dicts::Call<"Get">(dict, atom.Handle()), KAPAdopt());
    if (atom.Text() != key || !AreSame(value.Handle(), entry)) return false;
    Iterators::Call<"Next">(iterator.Handle());
  }
  return Iterators::Call<"IsDone">(iterator.Handle());
}

}  // namespace

std::string Show(const ModelRef& model) {
  if (!model) return kEmptySlot;
  std::string parts;
  for (const ModelRef& element : model->fElements) parts += Show(element);
  for (const auto& [key, entry] : model->fEntries) parts += Quoted(key) + Show(entry);
  if (model->fType == kPOSArray) return '[' + parts + "] ";
  return model->fType == kPOSDict ? '<' + parts + "> " : model->fScalar;
}

bool AreSame(POSObject* object, const ModelRef& model) {
  if (!object || !model) return !object && !model;
  if (static_cast<POSType>(Objects::Call<"GetType">(object)) != model->fType) return false;
  if (model->fType == kPOSArray) return HasElements(object, model->fElements);
  if (model->fType == kPOSDict) return HasEntries(object, model->fEntries);
  return ScalarText(object, model->fType) == model->fScalar;
}

bool HasDocument(const ModelRef& model) { return model && model->fType != kPOSRawPointer; }
bool HasText(const ModelRef& model) { return HasDocument(model) && model->fType != kPOSBinData; }
