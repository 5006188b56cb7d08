// SPDX-License-Identifier: MIT

// How values are read. The objects are made first and filled in place.

#include <algorithm>
#include <cmath>

#include "pos/POSException.h"
#include "pos/POSNumber.h"
#include "pos/POSString.h"
#include "posimpl/base/NestingGuard.h"
#include "posimpl/base/ObjectKind.h"
#include "posimpl/notation/Digits.h"
#include "posimpl/notation/NumberText.h"
#include "posimpl/objects/Number.h"
#include "posimpl/objects/String.h"
#include "posimpl/streamer/TypeAStreamer.h"

namespace NPOSStreamerImpl::NTypeAImpl {

using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::CPOSObject;
using KAP_T_MT::KAPAdopt;
using KAP_T_MT::POSException;
using NPOSObjectImpl::Array;
using NPOSObjectImpl::BinData;
using NPOSObjectImpl::Dict;
using NPOSObjectImpl::Made;
using NPOSObjectImpl::Number;
using NPOSObjectImpl::UnicodeString;

namespace {

constexpr std::size_t kMaxNumberLength = 62;
constexpr std::ptrdiff_t kMaxQuickDigits = 15;  // every such number is exact as a double

bool ContinuesNumber(char c) noexcept {
  return NPOSObjectImpl::IsDigit(c) || c == '+' || c == '-' || c == '.' || c == 'E' || c == 'e';
}

// The number that the hexadecimal digits make; POSException with the message for others.
unsigned HexNumber(const char* digits, std::size_t count, const char* malformed) {
  unsigned number = 0;
  if (!NPOSObjectImpl::ReadHex(digits, count, &number)) throw POSException(malformed);
  return number;
}

// Reads a short whole number that is in the buffer with its end, the ordinary case; else false.
// It saves the copy and the general conversion.
bool ReadQuickNumber(ICharStream& in, double* value) noexcept {
  const std::span<char> atHand = in.AtHand();
  if (atHand.size() < kMaxQuickDigits + 2) return false;
  const char* const begin = atHand.data();
  const char* const first = *begin == '-' ? begin + 1 : begin;
  const char* const limit = first + kMaxQuickDigits;
  const char* cursor = first;
  std::int64_t digits = 0;
  for (; cursor != limit; ++cursor) {
    const unsigned digit = static_cast<unsigned char>(*cursor) - unsigned{'0'};
    if (digit > 9) break;
    digits = digits * 10 + digit;
  }
  if (cursor == first || !IsWhitespace(*cursor)) return false;
  in.Skip(static_cast<std::size_t>(cursor + 1 - begin));
  *value = static_cast<double>(digits);
  if (first != begin) *value = -*value;
  return true;
}

}  // namespace

CPOSObject TypeAStreamer::DeserializeObject(const KAP_T_MT::CKAPPositionableStream& stream) {
  CPOSObject object;  // outside, so that it is released when giving characters back fails
  {
    ICharStream in(stream);
    object = DeserializeObject(in);
  }
  return object;
}

CPOSObject TypeAStreamer::DeserializeObject(ICharStream& in) {
  char open = '\0';
  return FindValue(in, &open) ? ReadValue(in, open) : CPOSObject();
}

// The first character of the next value, or false at the end of what encloses it.
bool TypeAStreamer::FindValue(ICharStream& in, char* open) {
  do {
    // The fast path: white space never ends an array, a dictionary or the document.
    in.SkipWhitespace();
    if (!in.GetChar(open)) return false;
  } while (*open == ' ');
  return true;
}

CPOSObject TypeAStreamer::ReadValue(ICharStream& in, char open) {
  const StreamParams& params = GetReadingParams(open);
  const ContextScope context(in, params);
  switch (params.kType) {
    case KAP_T_MT::kPOSNumber:
      return CPOSObject(Number::NewContainer(ReadNumber(in)), KAPAdopt());
    case KAP_T_MT::kPOSString:
      return CPOSObject(NPOSObjectImpl::String::NewContainer(ReadString(in)), KAPAdopt());
    case KAP_T_MT::kPOSUnicodeString:
      return CPOSObject(UnicodeString::NewContainer(ReadUnicode(in)), KAPAdopt());
    case KAP_T_MT::kPOSBinData:
      return CPOSObject(ReadBinData(in), KAPAdopt());
    case KAP_T_MT::kPOSArray:
      return ReadArray(in);
    case KAP_T_MT::kPOSDict:
      return ReadDict(in);
    case KAP_T_MT::kPOSRawPointer:
      throw POSException("Cannot meaningfully read in a raw pointer (write is for debugging only)");
  }
  throw POSException("Cannot determine streaming params");
}

double TypeAStreamer::ReadNumber(ICharStream& in) {
  double value = 0;
  if (ReadQuickNumber(in, &value)) return value;
  char text[kMaxNumberLength + 1];
  const std::size_t length = in.GetChars(text, sizeof text, false, false);
  if (length == 0 || length > kMaxNumberLength ||
      !std::all_of(text, text + length, ContinuesNumber)) {
    throw POSException("malformed number");
  }
  return NPOSObjectImpl::ParseNumber(text, text + length);
}

// The text lives until something else is read. It stays in the stream's buffer when all of it is
// there and has no escape, else it is collected.
const char* TypeAStreamer::ReadString(ICharStream& in) {
  const auto standsForItself = [&in](char c) {
    return in.Context().HowToRead(c) == StreamParams::Meaning::kItself;
  };
  fText.Clear();
  for (char next = '\0';;) {
    const std::span<char> atHand = in.AtHand();
    const auto stop = std::find_if_not(atHand.begin(), atHand.end(), standsForItself);
    const auto run = static_cast<std::size_t>(stop - atHand.begin());
    if (fText.Size() == 0 && stop != atHand.end() && *stop == in.Context().kClose) {
      *stop = '\0';
      in.Skip(run + 1);
      return atHand.data();
    }
    fText.Append(atHand.data(), run);
    in.Skip(run);
    if (!in.GetChar(&next)) break;
    fText.Append(next);
  }
  fText.Append('\0');
  return fText.Data();
}

const unsigned short* TypeAStreamer::ReadUnicode(ICharStream& in) {
  constexpr const char* kMalformed = "malformed Unicode string";
  fUnits.Clear();
  char digits[4];
  while (const std::size_t count = in.GetChars(digits, sizeof digits, false, false)) {
    if (count < sizeof digits) throw POSException(kMalformed);
    fUnits.Append(static_cast<unsigned short>(HexNumber(digits, sizeof digits, kMalformed)));
  }
  fUnits.Append(0);
  return fUnits.Data();
}

// A string value, of which only the text is wanted. Any other value is read to its end first.
const char* TypeAStreamer::ReadStringValue(ICharStream& in, char open) {
  const StreamParams& params = GetReadingParams(open);
  if (params.kType != KAP_T_MT::kPOSString) {
    ReadValue(in, open);
    throw POSException(KAP_T_MT::CPOSString::kDowncastFailed);
  }
  const ContextScope context(in, params);
  return ReadString(in);
}

// The length of binary data, a number value.
std::uint64_t TypeAStreamer::ReadLength(ICharStream& in) {
  constexpr double kTooLarge = 18446744073709551616.0;  // 2^64
  const CPOSObject object = DeserializeObject(in);
  const Number* number = Number::GetInstanceNoThrow(object.Handle());
  if (!number) throw POSException(KAP_T_MT::CPOSNumber::kDowncastFailed);
  const double length = std::trunc(number->Get());
  if (!(length >= 0 && length < kTooLarge)) throw POSException("malformed number");
  return static_cast<std::uint64_t>(length);
}

// The declared length is not trusted: memory grows with the bytes read.
POSObject* TypeAStreamer::ReadBinData(ICharStream& in) {
  // The name and the length may be binary data, wrongly.
  const NPOSObjectImpl::NestingGuard guard(fStack);
  char open = '\0';
  if (!FindValue(in, &open)) throw POSException(KAP_T_MT::CPOSString::kDowncastFailed);
  const CKAPStringAtom typeName(ReadStringValue(in, open));
  const std::uint64_t length = ReadLength(in);
  NPOSObjectImpl::GrowingBuffer<unsigned char> bytes;
  char digits[2];
  while (bytes.Size() < length) {
    in.GetChars(digits, sizeof digits, true, true);
    bytes.Append(
        static_cast<unsigned char>(HexNumber(digits, sizeof digits, "malformed binary data")));
  }
  if (in.GetChars(digits, 1, false, true) != 0) {
    throw POSException("Unexpected chars after binary data");
  }
  return BinData::NewContainer(typeName.Text(), bytes.Data(), bytes.Size());
}

CPOSObject TypeAStreamer::ReadArray(ICharStream& in) {
  const NPOSObjectImpl::NestingGuard guard(fStack);
  Made<Array> array;
  while (CPOSObject element = DeserializeObject(in)) array.fInstance.Append(std::move(element));
  return std::move(array.fObject);
}

CPOSObject TypeAStreamer::ReadDict(ICharStream& in) {
  const NPOSObjectImpl::NestingGuard guard(fStack);
  Made<Dict> dict;
  for (char open = '\0'; FindValue(in, &open);) {
    CKAPStringAtom key(ReadStringValue(in, open));
    CPOSObject value = DeserializeObject(in);
    if (value.IsNull()) throw POSException("missing dictionary value");
    dict.fInstance.Put(
        key.Text(), [&] { return std::move(key); }, std::move(value));
  }
  return std::move(dict.fObject);
}

}  // namespace NPOSStreamerImpl::NTypeAImpl
