// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/Visitor.h"
#include "formats/json/TagDetector.h"

namespace PosUtil {

class ValueTree;

// A value, which stays where it is: in its document, or as nodes of a tree.
struct ValueReference {
  enum Kind : char { kNumber, kString, kUnicode, kBinary, kPointer, kEmpty, kArray, kDict, kKept };

  Kind fKind;
  std::string_view fBytes = {};      // of a text or binary data
  const char* fType = "";            // of binary data
  std::uint64_t fBits = 0;           // a number, a pointer or the node of a container
  const ValueTree* fTree = nullptr;  // of a container
};

// Numbers for values: the same number for the same value, in all documents. The values must outlive
// this: copies would take more memory than the documents.
class ValueNumbers {
 public:
  std::uint32_t Of(const ValueReference& value);

 private:
  struct Entry {
    ValueReference fValue;
    std::size_t fHash;
  };

  void Grow();
  std::uint32_t& SlotFor(const ValueReference& value, std::size_t hash);

  static constexpr std::uint32_t kFree = UINT32_MAX;

  std::vector<Entry> fEntries;                                                  // by number
  std::vector<std::uint32_t> fSlots = std::vector<std::uint32_t>(1024, kFree);  // by hash
};

// The values of a document, each with its number, so that a comparison of two values takes one step
// however large they are. The library's comparison would visit the same values again at each level.
class ValueTree final : public Visitor {
 public:
  struct Node {
    std::uint32_t fNumber = 0;
    std::uint32_t fEnd = 0;      // the node after the last one inside
    const char* fKey = nullptr;  // lives as long as the document
    enum Kind : char { kScalar, kArray, kDict } fKind = kScalar;
  };

  // With `hasKept`, what --loss=keep has kept is a scalar, and an escaped object is the one inside.
  // The object must outlive this.
  ValueTree(const KAP_T_MT::CPOSObject& object, const std::string& name, bool hasKept,
            ValueNumbers& numbers);

  static constexpr std::uint32_t kRoot = 0;
  const Node& operator[](std::uint32_t node) const { return fNodes[node]; }
  std::vector<std::uint32_t> ChildrenOf(std::uint32_t node) const;

 private:
  // A container that has not ended yet.
  struct Open {
    std::uint32_t fNode;
    ValueReference::Kind fKind;
    bool fIsEscape = false;  // the dictionary inside, which is the object, has not ended yet
  };

  void At(const Place& place) override;
  void Number(double value) override;
  void String(const char* text) override;
  void UnicodeString(const unsigned short* units) override;
  void BinData(const char* typeName, const unsigned char* data, std::size_t size) override;
  void RawPointer(const void* pointer) override;
  void EmptySlot() override { AddScalar({ValueReference::kEmpty}); }
  void BeginArray(std::size_t) override { Begin(Node::kArray); }
  void BeginDict(POSDict* dict) override;
  void EndArray(const Place&, std::size_t) override { End(); }
  void EndDict(const Place&, std::size_t count) override;

  void AddScalar(const ValueReference& value);
  void Begin(Node::Kind kind);
  void End();

  ValueNumbers& fNumbers;
  const bool fHasKept;
  std::vector<Node> fNodes;
  std::vector<Open> fOpen;
  const char* fKey = nullptr;
  POSDict* fNewDict = nullptr;  // its first key decides whether it is a kept value
  bool fIsKept = false;         // the next value is that of a kept one, or of an escape
  bool fIsEscaped = false;      // fNewDict is not a kept value, though it looks so
  TagDetector fKept;
};

}  // namespace PosUtil
