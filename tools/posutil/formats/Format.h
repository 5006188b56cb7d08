// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/Registered.h"
#include "base/TextPart.h"
#include "files/Output.h"
#include "formats/Layout.h"
#include "formats/Token.h"
#include "pos/POSObject.h"
#include "program/Session.h"
#include "terminal/Style.h"

namespace PosUtil {

enum class Extent {
  kOne,  // anything after the first document is an error
  kAll,  // every document in the input
};

enum class Text : bool { kDropped, kKept };

// A part of an input, the offset in it at which a document begins, and the lines and columns before
// the document.
struct DocumentText {
  TextPart fPart;
  std::size_t fBegin = 0;
  LineCounter fBefore = {};
};

// The documents of one input, in their order.
class Documents {
 public:
  Documents() = default;
  Documents(const Documents&) = delete;
  Documents& operator=(const Documents&) = delete;
  virtual ~Documents() = default;

  // Reads the next document. Returns an empty object after the last one; with Extent::kOne the
  // first call never does.
  // Throws Failure; after an UnheldValue or a LossFailure, the next call goes on. The caller checks
  // the reports of the library.
  virtual KAP_T_MT::CPOSObject Next() = 0;

  // Prints the warnings about the documents so far, if they wait for the last one.
  virtual void ReportLosses() {}

  // The text that holds the last document. It is there only with Text::kKept.
  virtual DocumentText LastText() const = 0;
};

// Reads one format. Each format has one static object.
class Reader : public Registered<Reader> {
 public:
  // `endings` lists the endings of file names, such as ".json", separated by spaces.
  Reader(int order, const char* name, std::string_view endings)
      : Registered(order), kName(name), kEndings(endings) {}

  // "-" means standard input. Destroy the documents before the session. Throws Failure.
  virtual std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent, Text text,
                                          Session& session) const = 0;

  // Returns whether a document of the format may begin with this text, which is not only white
  // space. kPerhaps: more text would tell, and this is not all.
  enum class Recognition { kNo, kPerhaps, kYes };
  virtual Recognition Recognize(std::string_view text, bool isAll) const = 0;

  // For the places of values in a document that has been read: the token at or after an offset,
  // which lies outside of tokens, and the key that a token stands for.
  virtual Token NextToken(std::string_view text, std::size_t at) const = 0;
  virtual std::string KeyOf(std::string_view token) const = 0;
  // The key of a dictionary in the text that stands for the value of this key; empty if the format
  // has none.
  virtual std::string WrapperKey() const { return ""; }

  // The reader for the ending of the file name, or null.
  static const Reader* ForEnding(const std::string& fileName);
  // The reader for the ending of the file name or, if no reader has it, for the beginning of the
  // file; null if that shows no format. Remembers the result. Throws Failure for a file that it
  // cannot read. Any thread.
  static const Reader* ForFile(const std::string& fileName);
  // Returns whether the file is short and has nothing but white space.
  static bool IsBlank(const std::string& fileName);

  const char* const kName;
  const std::string_view kEndings;

 protected:
  ~Reader() = default;
};

struct WriteOptions {
  bool fOnOneLine = false;
  Indent fIndent = {};
  bool fRestoresKept = false;  // JSON writes what --loss=keep has kept as it was
  Style fStyle;
};

// Which layouts a writer has.
enum class Layouts {
  kFixed,
  kIndented,  // with any indentation
  kAll,       // and on one line
};

// Writes one format. Each format has one static object.
class Writer : public Registered<Writer> {
 public:
  // `between` separates two documents; `end` follows the last one in a file.
  Writer(int order, const char* name, Layouts layouts, std::string_view between = "\n",
         std::string_view end = "\n")
      : Registered(order), kName(name), kLayouts(layouts), kBetween(between), kEnd(end) {}

  // Writes the object, without kBetween and kEnd. Throws Failure, with the name `document` in it;
  // `out` then holds an incomplete document. The caller checks the reports of the library.
  virtual void Write(const KAP_T_MT::CPOSObject& object, const std::string& document,
                     const WriteOptions& options, Output& out) const = 0;

  const char* const kName;
  const Layouts kLayouts;
  const std::string_view kBetween;
  const std::string_view kEnd;

 protected:
  ~Writer() = default;
};

// The reader or writer of the name, or null. Each reader has a writer of its name.
template <class Format>
const Format* FindFormat(std::string_view name) {
  for (const Format* format : Format::All()) {
    if (name == format->kName) return format;
  }
  return nullptr;
}

}  // namespace PosUtil
