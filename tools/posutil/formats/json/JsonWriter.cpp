// The JSON writer. See TaggedJson.h for values that JSON does not have; an empty slot is null.

#include <cmath>
#include <string>

#include "base/DecimalText.h"
#include "base/Utf.h"
#include "base/ValueError.h"
#include "formats/Format.h"
#include "formats/Layout.h"
#include "formats/Visitor.h"
#include "formats/json/Base64.h"
#include "formats/json/JsonText.h"
#include "formats/json/TaggedJson.h"

namespace PosUtil {

namespace {

class JsonVisitor final : public Visitor {
 public:
  JsonVisitor(const WriteOptions& options, Output& out)
      : fOut(out), fLayout(options.fOnOneLine), fColon(options.fOnOneLine ? ":" : ": ") {}

  void At(const Place& place) override {
    if (place.fIndex > 0) fOut.Put(',');
    if (place.fDepth > 0) fLayout.BeginItem(fOut, place.fDepth);
    if (place.fKey) PutKey(place.fKey);
  }

  void Number(double value) override {
    if (!std::isfinite(value)) throw ValueError("JSON cannot hold infinities or NaN");
    fOut.Put(DecimalText(value).View());
    // Many readers read "-0" as the integer 0.
    if (value == 0 && std::signbit(value)) fOut.Put(".0");
  }
  void String(const char* text) override { PutJsonString(fOut, text); }
  void UnicodeString(const unsigned short* units) override {
    std::string text;
    if (!Utf16ToUtf8(units, text)) throw ValueError(kLoneSurrogate);
    PutMember('{', kUnicodeTag, text.c_str());
    fOut.Put('}');
  }
  void BinData(const char* typeName, const unsigned char* data, std::size_t size) override {
    PutMember('{', kBinaryTag, typeName);
    PutMember(',', kBase64Member, Base64Encode(data, size).c_str());
    fOut.Put('}');
  }
  void RawPointer(const void*) override { throw ValueError("JSON cannot hold a raw pointer"); }
  void EmptySlot() override { fOut.Put("null"); }

  void BeginArray(std::size_t) override { fOut.Put('['); }
  void BeginDict() override { fOut.Put('{'); }
  void EndArray(const Place& place, std::size_t count) override { End(']', place, count); }
  void EndDict(const Place& place, std::size_t count) override { End('}', place, count); }

 private:
  void PutKey(const char* key) {
    if (IsJsonTag(key)) throw ValueError(kTagMisused);
    PutJsonString(fOut, key);
    fOut.Put(fColon);
  }

  // A member of a tagged value, which stays on one line.
  void PutMember(char before, const char* key, const char* text) {
    fOut.Put(before);
    if (before == ',' && fColon.size() > 1) fOut.Put(' ');
    PutJsonString(fOut, key);
    fOut.Put(fColon);
    PutJsonString(fOut, text);
  }

  void End(char bracket, const Place& place, std::size_t count) {
    if (count > 0) fLayout.BeginEnd(fOut, place.fDepth);
    fOut.Put(bracket);
  }

  Output& fOut;
  Layout fLayout;
  std::string_view fColon;
};

class JsonWriter final : public Writer {
 public:
  JsonWriter() : Writer(2, "json") {}

  void Write(const KAP_T_MT::CPOSObject& object, const std::string& document,
             const WriteOptions& options, Output& out) const override {
    JsonVisitor visitor(options, out);
    Visit(object, document, visitor);
  }
} gJsonWriter;

}  // namespace

}  // namespace PosUtil
