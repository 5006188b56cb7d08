// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/ValuePath.h"
#include "formats/Format.h"
#include "formats/Visitor.h"
#include "formats/json/TagDetector.h"

namespace PosUtil {

// Writes a line PATH = VALUE for every scalar, empty container and empty slot. Values are JSON;
// what JSON cannot hold appears as in an outline. A path is one that a user can give to a command.
// Control characters appear as escapes, so that a value never takes two lines.
class PathLines final : public Visitor {
 public:
  struct Options {
    std::string_view fMargin = "";  // starts each line; NOLINT(readability-redundant-string-init)
    bool fAsPointers = false;
    bool fRestoresKept = false;  // what --loss=keep has kept is one value
    Style fStyle = {};
  };

  // `place` is the path to the object that is visited.
  PathLines(const Options& options, const ValuePath& place, Output& out);

  void At(const Place& place) override;
  void Number(double value) override;
  void String(const char* text) override;
  void UnicodeString(const unsigned short* units) override;
  void BinData(const char* typeName, const unsigned char* data, std::size_t size) override;
  void RawPointer(const void*) override { PutLine("raw pointer"); }
  void EmptySlot() override { PutLine("null"); }
  void BeginArray(std::size_t count) override;
  void BeginDict(POSDict* dict) override;
  void EndArray(const Place&, std::size_t) override {}
  void EndDict(const Place& place, std::size_t count) override;

 private:
  // How much of the texts belongs to a value on the path.
  struct Level {
    std::size_t fDeepSize;
    std::size_t fPointerSize;
    bool fIsDeep;  // the library's notation can name it
  };

  void Enter(const PathStep& step);
  void ReturnTo(std::size_t depth);
  void PutLine(std::string_view value);

  const Options fOptions;
  const std::size_t fOuterDepth;
  Output& fOut;
  std::string fDeep;
  std::string fPointer;
  std::vector<Level> fLevels;
  POSDict* fNewDict = nullptr;  // its first key decides whether it is a kept value
  bool fIsKept = false;         // the next value is that of a kept one
  bool fIsEscaped = false;      // fNewDict is not a kept value, though it looks so
  TagDetector fKept;
};

}  // namespace PosUtil
