// SPDX-License-Identifier: MIT

// How values are written. Object by object in place: no value crosses the boundary.

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <iterator>

#include "pos/POSException.h"
#include "posimpl/base/FetchAhead.h"
#include "posimpl/base/NestingGuard.h"
#include "posimpl/notation/Digits.h"
#include "posimpl/notation/NumberText.h"
#include "posimpl/objects/Number.h"
#include "posimpl/objects/RawPointer.h"
#include "posimpl/objects/String.h"
#include "posimpl/streamer/TypeAStreamer.h"

namespace NPOSStreamerImpl::NTypeAImpl {

using KAP_T_MT::CPOSObject;
using KAP_T_MT::POSException;
using NPOSObjectImpl::Array;
using NPOSObjectImpl::BaseObject;
using NPOSObjectImpl::BinData;
using NPOSObjectImpl::Dict;
using NPOSObjectImpl::DictEntry;
using NPOSObjectImpl::DictTree;
using NPOSObjectImpl::kLowerHexDigits;
using NPOSObjectImpl::kUpperHexDigits;
using NPOSObjectImpl::Number;
using NPOSObjectImpl::RawPointer;
using NPOSObjectImpl::UnicodeString;

namespace {

constexpr std::size_t kBytesPerLine = 40;

// The objects that a check may look at, for each level that fits: milliseconds in all.
constexpr unsigned long kLooksPerLevel = 256;

// Throws what NestingGuard throws when the object has more levels. Looks at `looks` objects at
// most: an object that many others hold is met on each path to it, and the paths can be too many to
// follow.
void ExpectNoMoreLevels(const BaseObject& object, NPOSObjectImpl::NestingStack& stack,
                        unsigned long levels, unsigned long& looks) {
  if (levels == 0) NPOSObjectImpl::NestingGuard::ThrowTooDeep();
  const NPOSObjectImpl::NestingGuard guard(stack);
  const auto expectInside = [&](const POSObject* held) {
    if (looks == 0) return false;
    --looks;
    const BaseObject* inner = BaseObject::OwnInstance(held);
    if (inner && !KAP_T_MT::POSIsScalar(inner->GetType())) {
      ExpectNoMoreLevels(*inner, stack, levels - 1, looks);
    }
    return true;
  };
  switch (object.GetType()) {
    case KAP_T_MT::kPOSArray: {
      const auto elements = static_cast<const Array&>(object).Elements();
      static_cast<void>(std::all_of(elements.begin(), elements.end(), expectInside));
      return;
    }
    case KAP_T_MT::kPOSDict: {
      const DictEntry* entry = static_cast<const Dict&>(object).Entries().First();
      while (entry && expectInside(entry->Value())) entry = DictTree::Next(entry);
      return;
    }
    case KAP_T_MT::kPOSNumber:
    case KAP_T_MT::kPOSString:
    case KAP_T_MT::kPOSUnicodeString:
    case KAP_T_MT::kPOSBinData:
    case KAP_T_MT::kPOSRawPointer:
      return;
  }
}

// One level of indentation more.
class Indented {
 public:
  explicit Indented(std::int32_t& level) noexcept : fLevel(level) { ++fLevel; }
  Indented(const Indented&) = delete;
  Indented& operator=(const Indented&) = delete;
  ~Indented() { --fLevel; }

 private:
  std::int32_t& fLevel;
};

}  // namespace

// The close character is written as it is, even where the value's escapes include it.
template <class Content>
void TypeAStreamer::WriteValue(OCharStream& out, const StreamParams& params, Content content) {
  out.PutRaw(params.kOpen);
  content();
  out.PutRaw(params.kClose);
}

void TypeAStreamer::SerializeObject(const KAP_T_MT::CKAPPositionableStream& stream,
                                    const CPOSObject& object) {
  OCharStream out(stream);
  WriteObject(out, object.Handle());
}

void TypeAStreamer::WriteObject(OCharStream& out, POSObject* object) {
  const BaseObject* instance = BaseObject::GetInstanceNoThrow(object);
  if (!instance) [[unlikely]]
    throw POSException(kCannotBeWritten);
  const StreamParams& params = ParamsFor(instance->GetType());
  switch (params.kType) {
    case KAP_T_MT::kPOSNumber:
      return WriteNumberValue(out, params, static_cast<const Number*>(instance)->Get());
    case KAP_T_MT::kPOSString:
      return out.PutText(params, static_cast<const NPOSObjectImpl::String*>(instance)->Get(),
                         object);
    case KAP_T_MT::kPOSArray:
      return WriteArray(out, params, object, *static_cast<const Array*>(instance));
    case KAP_T_MT::kPOSDict:
      return WriteDict(out, params, object, *static_cast<const Dict*>(instance));
    case KAP_T_MT::kPOSUnicodeString:
    case KAP_T_MT::kPOSBinData:
    case KAP_T_MT::kPOSRawPointer:
      return WriteRareObject(out, params, object, *instance);
  }
  throw POSException(kCannotBeWritten);
}

void TypeAStreamer::WriteRareObject(OCharStream& out, const StreamParams& params, POSObject* object,
                                    const BaseObject& instance) {
  switch (params.kType) {
    case KAP_T_MT::kPOSUnicodeString: {
      const ScalarInUse inUse(out, object);
      return WriteValue(out, params, [&] {
        WriteUnicode(out, static_cast<const UnicodeString&>(instance).Get());
      });
    }
    case KAP_T_MT::kPOSBinData: {
      const ScalarInUse inUse(out, object);
      return WriteValue(out, params,
                        [&] { WriteBinData(out, static_cast<const BinData&>(instance)); });
    }
    case KAP_T_MT::kPOSRawPointer: {
      const void* const pointer = static_cast<const RawPointer&>(instance).GetRawPointer();
      return WriteValue(out, params, [&] { WriteRawPointer(out, pointer); });
    }
    case KAP_T_MT::kPOSNumber:
    case KAP_T_MT::kPOSString:
    case KAP_T_MT::kPOSArray:
    case KAP_T_MT::kPOSDict:
      break;  // WriteObject has them
  }
  throw POSException(kCannotBeWritten);
}

// An array that contains itself would fill half a gigabyte with indentation before the stack ends.
// So values nested deeper than usual are examined before they are written. The levels written so
// far show how much stack a level takes, and so which depth is out of reach; a quarter is added
// because the levels to come may take less.
//
// A container with many values before itself would write them at each of these levels, so a few
// levels look whether the container is being written already.
//
// The examination must not take much longer than writing, because only a "Write" can stop it. Where
// it ends early, values nested twice as deep are examined again, for longer if much was written.
void TypeAStreamer::CheckDeep(const OCharStream& out, const POSObject* handle,
                              const BaseObject& object) {
  const unsigned written = LevelsWritten();
  if (!std::has_single_bit(written)) return;
  if (out.IsWriting(handle)) NPOSObjectImpl::NestingGuard::ThrowTooDeep();
  if (written < kLevelsUnchecked) return;
  const std::uintptr_t taken = fFirstFrame - NPOSObjectImpl::NestingStack::Here();
  const NPOSObjectImpl::NestingLevel level(fStack);
  const unsigned long fit = fStack.HowManyFit(taken / written);
  unsigned long looks = fit * kLooksPerLevel + out.CountWritten();
  ExpectNoMoreLevels(object, fStack, fit + fit / 4, looks);
}

// Few tabs, the ordinary case, come with the line feed in one copy.
void TypeAStreamer::NewLine(OCharStream& out) const {
  static constexpr char kLine[] = "\n\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";
  constexpr std::size_t kSize = sizeof kLine - 1;
  const std::size_t length = 1 + static_cast<std::size_t>(fLevel);
  out.PutInPlace<kSize>([=](char* place) {
    std::memcpy(place, kLine, kSize);
    return place + std::min(length, kSize);
  });
  if (length > kSize) [[unlikely]]
    out.PutRaw('\t', length - kSize);
}

// Nothing in a number's text needs an escape, wherever it stands.
void TypeAStreamer::WriteNumberValue(OCharStream& out, const StreamParams& params, double value) {
  // By value: a capture by reference would keep both in memory, on a guarded stack.
  out.PutInPlace<NPOSObjectImpl::kNumberTextSize + 2>([&params, value](char* place) {
    *place++ = params.kOpen;
    place = NPOSObjectImpl::WriteNumber(value, place);
    *place++ = params.kClose;
    return place;
  });
}

// Upper-case digits for the high byte and lower-case ones for the low byte, deliberately.
void TypeAStreamer::WriteUnicode(OCharStream& out, const unsigned short* units) {
  for (; *units != 0; ++units) {
    const unsigned unit = *units;
    out.PutRaw(kUpperHexDigits[unit >> 12]);
    out.PutRaw(kUpperHexDigits[unit >> 8 & 15]);
    out.PutRaw(kLowerHexDigits[unit >> 4 & 15]);
    out.PutRaw(kLowerHexDigits[unit & 15]);
  }
}

void TypeAStreamer::WriteBinData(OCharStream& out, const BinData& data) {
  out.PutText(ParamsFor(KAP_T_MT::kPOSString), data.GetTypeName(), nullptr);
  out.PutRaw(' ');
  WriteNumberValue(out, ParamsFor(KAP_T_MT::kPOSNumber), static_cast<double>(data.GetSize()));
  out.PutRaw(' ');
  {
    const Indented indented(fLevel);
    const unsigned char* const bytes = data.GetBinData();
    for (unsigned long i = 0; i < data.GetSize(); ++i) {
      if (i % kBytesPerLine == 0) NewLine(out);
      out.PutRaw(kUpperHexDigits[bytes[i] >> 4]);
      out.PutRaw(kUpperHexDigits[bytes[i] & 15]);
    }
  }
  NewLine(out);
}

// For debugging only: it cannot be read back.
void TypeAStreamer::WriteRawPointer(OCharStream& out, const void* pointer) {
  char text[NPOSObjectImpl::kNumberTextSize];
  if (!pointer) return out.PutRaw("(nil)");
  out.PutRaw("0x");
  const auto [end, error] = std::to_chars(std::begin(text), std::end(text),
                                          reinterpret_cast<std::uintptr_t>(pointer), 16);
  out.PutRaw(std::string_view(text, end));
}

// The stream may change the array while it writes: each element is taken as it is then.
void TypeAStreamer::WriteArray(OCharStream& out, const StreamParams& params, POSObject* object,
                               const Array& array) {
  CheckDepth(out, object, array);
  const NPOSObjectImpl::NestingGuard guard(fStack);
  const ContainerInUse inUse(out, object);
  WriteValue(out, params, [&] { WriteElements(out, array); });
}

void TypeAStreamer::WriteElements(OCharStream& out, const Array& array) {
  {
    const Indented indented(fLevel);
    for (std::size_t i = 0; i < array.Count(); ++i) {
      NPOSObjectImpl::FetchAhead(array.Elements(), i);
      NewLine(out);
      if (i >= array.Count()) break;
      POSObject* const element = array.Elements()[i];
      if (!element) throw POSException("CPOSArray::GetAt subscript failed");
      WriteObject(out, element);
    }
  }
  NewLine(out);
}

void TypeAStreamer::WriteDict(OCharStream& out, const StreamParams& params, POSObject* object,
                              const Dict& dict) {
  CheckDepth(out, object, dict);
  const NPOSObjectImpl::NestingGuard guard(fStack);
  ContainerInUse inUse(out, object);
  WriteValue(out, params, [&] { WriteEntries(out, dict, inUse); });
}

// Where the stream has written during an entry, the entry may be gone: the next one is found by its
// key.
void TypeAStreamer::WriteEntries(OCharStream& out, const Dict& dict, ContainerInUse& inUse) {
  {
    const Indented indented(fLevel);
    const StreamParams& keyParams = ParamsFor(KAP_T_MT::kPOSString);
    for (const DictEntry* entry = dict.Entries().First(); entry;) {
      inUse.Enter(*entry);
      NewLine(out);
      out.PutText(keyParams, inUse.Key(), nullptr);
      out.PutRaw(' ');
      WriteObject(out, inUse.Value());
      if (inUse.IsKept()) [[unlikely]] {
        entry = dict.Entries().FirstAfter(inUse.Leave());
      } else {
        entry = DictTree::Next(entry);
      }
    }
  }
  NewLine(out);
}

}  // namespace NPOSStreamerImpl::NTypeAImpl
