// SPDX-License-Identifier: MIT
// The TypeA format, written by the library's streamer.

#include <cmath>

#include "POSStreamer.h"
#include "base/ValueError.h"
#include "formats/Format.h"
#include "formats/Visitor.h"
#include "formats/typea/StreamOutput.h"

namespace PosUtil {

namespace {

// Rejects the values that the streamer writes but no reader accepts.
class TypeAVisitor final : public Visitor {
 public:
  void At(const Place&) override {}

  void Number(double value) override {
    if (!std::isfinite(value)) throw ValueError("TypeA cannot hold infinities or NaN");
  }
  void String(const char*) override {}
  void UnicodeString(const unsigned short*) override {}
  void BinData(const char*, const unsigned char*, std::size_t) override {}
  void RawPointer(const void*) override { throw ValueError("TypeA cannot hold a raw pointer"); }
  void EmptySlot() override { throw ValueError("TypeA cannot hold an empty slot"); }

  void BeginArray(std::size_t) override {}
  void BeginDict(POSDict*) override {}
  void EndArray(const Place&, std::size_t) override {}
  void EndDict(const Place&, std::size_t) override {}
};

// Nothing separates two documents: not every reader skips white space there.
class TypeAWriter final : public Writer {
 public:
  TypeAWriter() : Writer(4, "typea", Layouts::kFixed, "", "") {}

  void Write(const KAP_T_MT::CPOSObject& object, const std::string& document, const WriteOptions&,
             Output& out) const override {
    TypeAVisitor visitor;
    Visit(object, document, visitor);
    StreamOutput stream(out);
    KAP_T_MT::CPOSStreamer::New().Serialize(stream.Stream(), object);
    stream.CheckFailure();
  }
} gTypeAWriter;

}  // namespace

}  // namespace PosUtil
