// SPDX-License-Identifier: MIT
#pragma once

#include <iterator>

#include "posimpl/base/GrowingBuffer.h"
#include "posimpl/base/NestingGuard.h"
#include "posimpl/objects/Array.h"
#include "posimpl/objects/BinData.h"
#include "posimpl/objects/Dict.h"
#include "posimpl/objects/UnicodeString.h"
#include "posimpl/streamer/StreamerBase.h"

namespace NPOSStreamerImpl::NTypeAImpl {

// Writes and reads values, one level of recursion for each level of nesting. The objects are our
// own: they are read from and filled in place, not through their procedures.
class TypeAStreamer : public StreamerBase {
 public:
  void SerializeObject(const KAP_T_MT::CKAPPositionableStream& stream,
                       const KAP_T_MT::CPOSObject& object) final;
  KAP_T_MT::CPOSObject DeserializeObject(const KAP_T_MT::CKAPPositionableStream& stream) final;
  void SerializeObject(OCharStream& out, const KAP_T_MT::CPOSObject& object) final {
    WriteObject(out, object.Handle());
  }
  KAP_T_MT::CPOSObject DeserializeObject(ICharStream& in) final;

 protected:
  explicit TypeAStreamer(int level) noexcept : fFirstLevel(level), fLevel(level) {}

 private:
  // The levels that are written before one is looked for that contains itself, and before the depth
  // of the rest is checked. Their indentation is small.
  static constexpr unsigned kLevelsUnsearched = 4;
  static constexpr unsigned kLevelsUnchecked = 64;

  // ---- Writing: the content of each kind ----
  // Those of GetWritingParams, without a virtual call for each value.
  const StreamParams& ParamsFor(KAP_T_MT::POSType type) {
    const StreamParams*& params = fWritingParams[type];
    if (!params) [[unlikely]]
      params = &GetWritingParams(type);
    return *params;
  }
  void WriteObject(OCharStream& out, POSObject* object);
  static void WriteNumberValue(OCharStream& out, const StreamParams& params, double value);
  static void WriteUnicode(OCharStream& out, const unsigned short* units);
  void WriteBinData(OCharStream& out, const NPOSObjectImpl::BinData& data);
  static void WriteRawPointer(OCharStream& out, const void* pointer);
  // Out of line: the frames of containers and rare scalars would burden those of the others.
  [[gnu::noinline]] void WriteRareObject(OCharStream& out, const StreamParams& params,
                                         POSObject* object,
                                         const NPOSObjectImpl::BaseObject& instance);
  [[gnu::noinline]] void WriteArray(OCharStream& out, const StreamParams& params, POSObject* object,
                                    const NPOSObjectImpl::Array& array);
  [[gnu::noinline]] void WriteDict(OCharStream& out, const StreamParams& params, POSObject* object,
                                   const NPOSObjectImpl::Dict& dict);
  void WriteElements(OCharStream& out, const NPOSObjectImpl::Array& array);
  void WriteEntries(OCharStream& out, const NPOSObjectImpl::Dict& dict, ContainerInUse& inUse);
  template <class Content>
  static void WriteValue(OCharStream& out, const StreamParams& params, Content content);
  void NewLine(OCharStream& out) const;
  void CheckDepth(const OCharStream& out, const POSObject* handle,
                  const NPOSObjectImpl::BaseObject& object) {
    const unsigned written = LevelsWritten();
    if (written == 0) fFirstFrame = NPOSObjectImpl::NestingStack::Here();
    if (written >= kLevelsUnsearched) [[unlikely]]
      CheckDeep(out, handle, object);
  }
  [[gnu::noinline]] void CheckDeep(const OCharStream& out, const POSObject* handle,
                                   const NPOSObjectImpl::BaseObject& object);
  unsigned LevelsWritten() const noexcept { return static_cast<unsigned>(fLevel - fFirstLevel); }

  // ---- Reading: the content of each kind, the close character included ----
  KAP_T_MT::CPOSObject ReadValue(ICharStream& in, char open);
  static bool FindValue(ICharStream& in, char* open);
  static double ReadNumber(ICharStream& in);
  const char* ReadString(ICharStream& in);
  const unsigned short* ReadUnicode(ICharStream& in);
  POSObject* ReadBinData(ICharStream& in);
  KAP_T_MT::CPOSObject ReadArray(ICharStream& in);
  KAP_T_MT::CPOSObject ReadDict(ICharStream& in);
  const char* ReadStringValue(ICharStream& in, char open);
  std::uint64_t ReadLength(ICharStream& in);

  NPOSObjectImpl::GrowingBuffer<char> fText;  // of the string that is being read
  NPOSObjectImpl::GrowingBuffer<unsigned short> fUnits;
  const std::int32_t fFirstLevel;
  std::int32_t fLevel;                                                          // of indentation
  const StreamParams* fWritingParams[std::size(KAP_T_MT::kPOSTypes) + 1] = {};  // by type
  std::uintptr_t fFirstFrame = 0;  // where the stack was at the first level
  NPOSObjectImpl::NestingStack& fStack = NPOSObjectImpl::NestingStack::OnThisThread();
};

}  // namespace NPOSStreamerImpl::NTypeAImpl
