// SPDX-License-Identifier: MIT
// The JSON writer. See TaggedJson.h for values that one side does not have; an empty slot is null.

#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "base/DecimalText.h"
#include "base/Utf.h"
#include "base/ValueError.h"
#include "formats/Format.h"
#include "formats/Paint.h"
#include "formats/Visitor.h"
#include "formats/json/Base64.h"
#include "formats/json/JsonText.h"
#include "formats/json/TagDetector.h"
#include "formats/json/TaggedJson.h"

namespace PosUtil {

namespace {

template <class Colours>
class JsonVisitor final : public Visitor {
 public:
  JsonVisitor(Colours colours, const WriteOptions& options, Output& out)
      : fColours(colours),
        fOut(out),
        fLayout(options.fOnOneLine, options.fIndent),
        fColon(options.fOnOneLine ? ":" : ": "),
        fRestoresKept(options.fRestoresKept) {}

  void At(const Place& place) override {
    if (fNewDict && OpenDict(place.fKey) == Form::kKept) return;  // its value takes its place
    if (place.fIndex > 0) fOut.Put(',');
    if (place.fDepth > 0) fLayout.BeginItem(fOut, Depth(place));
    if (place.fKey) PutKey(place.fKey);
  }

  void Number(double value) override {
    if (!std::isfinite(value)) throw ValueError("JSON cannot hold infinities or NaN");
    fColours.In(&Style::fNumber, fOut, [&] {
      fOut.PutInPlace(kLongestDecimal, [value](char* place) { return WriteDecimal(place, value); });
      // Many readers read "-0" as the integer 0.
      if (value == 0 && std::signbit(value)) fOut.Put(".0");
    });
  }
  void String(const char* text) override {
    if (std::exchange(fIsVerbatim, false)) {
      return fColours.In(&Style::fNumber, fOut, [&] { fOut.Put(text); });
    }
    PutString(&Style::fString, text);
  }
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
  void EmptySlot() override {
    fColours.In(&Style::fNote, fOut, [&] { fOut.Put("null"); });
  }

  void BeginArray(std::size_t) override { fOut.Put('['); }
  void BeginDict(POSDict* dict) override { fNewDict = dict; }
  void EndArray(const Place& place, std::size_t count) override { End("]", place, count); }
  void EndDict(const Place& place, std::size_t count) override {
    if (fNewDict) OpenDict("");
    const Form form = fForms.back();
    fForms.pop_back();
    fKeptForms -= form == Form::kKept;
    if (form != Form::kKept) End(form == Form::kEscaped ? "}}" : "}", place, count);
  }

 private:
  enum class Form : char { kOrdinary, kEscaped, kKept };

  // Starts the dictionary that BeginDict announced: its first key decides on its form.
  Form OpenDict(const char* key) {
    POSDict* const dict = std::exchange(fNewDict, nullptr);
    const Form form = *key == '$' ? FormOf(dict, key) : Form::kOrdinary;
    fIsVerbatim = form == Form::kKept;
    fForms.push_back(form);
    fKeptForms += form == Form::kKept;
    if (form == Form::kEscaped) {
      fOut.Put('{');
      PutKey(kObjectTag);
    }
    if (form != Form::kKept) fOut.Put('{');
    return form;
  }

  Form FormOf(POSDict* dict, const char* key) {
    const bool isKept = fRestoresKept && fKept.IsKept(dict, key);
    // In a kept value, a dictionary is the escaped one.
    if (isKept) return fIsVerbatim ? Form::kOrdinary : Form::kKept;
    return fTags.LooksLikeTag(dict, key) ? Form::kEscaped : Form::kOrdinary;
  }

  // A kept value takes the place of the dictionary around it.
  std::size_t Depth(const Place& place) const { return place.fDepth - fKeptForms; }

  void PutKey(const char* key) {
    PutString(&Style::fKey, key);
    fOut.Put(fColon);
  }

  void PutString(const char* Style::*colour, const char* text) {
    fColours.In(colour, fOut, [&] { PutJsonString(fOut, text); });
  }

  // A member of a tagged value, which stays on one line.
  void PutMember(char before, const char* key, const char* text) {
    fOut.Put(before);
    if (before == ',' && fColon.size() > 1) fOut.Put(' ');
    PutKey(key);
    PutString(&Style::fString, text);
  }

  void End(std::string_view brackets, const Place& place, std::size_t count) {
    if (count > 0) fLayout.BeginEnd(fOut, Depth(place));
    fOut.Put(brackets);
  }

  const Colours fColours;
  Output& fOut;
  Layout fLayout;
  std::string_view fColon;
  const bool fRestoresKept;
  POSDict* fNewDict = nullptr;
  bool fIsVerbatim = false;  // the next value is that of a kept one
  std::vector<Form> fForms;  // of the open dictionaries
  std::size_t fKeptForms = 0;
  TagDetector fTags;
  TagDetector fKept;
};

class JsonWriter final : public Writer {
 public:
  JsonWriter() : Writer(2, "json", Layouts::kAll) {}

  void Write(const KAP_T_MT::CPOSObject& object, const std::string& document,
             const WriteOptions& options, Output& out) const override {
    WithPaint(options.fStyle, [&](auto paint) {
      JsonVisitor visitor(paint, options, out);
      Visit(object, document, visitor);
    });
  }
} gJsonWriter;

}  // namespace

}  // namespace PosUtil
