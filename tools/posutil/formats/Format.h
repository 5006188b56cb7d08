#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/Registered.h"
#include "files/Output.h"
#include "formats/Documents.h"
#include "pos/POSObject.h"
#include "program/Session.h"
#include "terminal/Style.h"

namespace PosUtil {

enum class Extent {
  kOne,  // anything behind the first document is an error
  kAll,  // documents stand one behind the other
};

// A format that documents are read from. One static object per format.
class Reader : public Registered<Reader> {
 public:
  // `endings` are those of file names, such as ".json", with a space between two.
  Reader(int order, const char* name, std::string_view endings)
      : Registered(order), kName(name), kEndings(endings) {}

  // "-" is standard input. The documents must be gone before the library is. Throws Failure.
  virtual std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent,
                                          Session& session) const = 0;

  // Null when there is none.
  static const Reader* ForFile(const std::string& fileName);

  const char* const kName;
  const std::string_view kEndings;

 protected:
  ~Reader() = default;
};

struct WriteOptions {
  bool fOnOneLine = false;
  Style fStyle;
};

// A format that documents are written in. One static object per format.
class Writer : public Registered<Writer> {
 public:
  // `between` stands between two documents, `behind` follows the last one in a file.
  Writer(int order, const char* name, std::string_view between = "\n",
         std::string_view behind = "\n")
      : Registered(order), kName(name), kBetween(between), kBehind(behind) {}

  // Writes the object, without what stands behind it. Throws Failure; `document` is the name to be
  // used in it. What was put into `out` before a failure is worth nothing. The caller asks for
  // reports.
  virtual void Write(const KAP_T_MT::CPOSObject& object, const std::string& document,
                     const WriteOptions& options, Output& out) const = 0;

  const char* const kName;
  const std::string_view kBetween;
  const std::string_view kBehind;

 protected:
  ~Writer() = default;
};

// The format of that name, or null.
template <class Format>
const Format* FindFormat(std::string_view name) {
  for (const Format* format : Format::All()) {
    if (name == format->kName) return format;
  }
  return nullptr;
}

}  // namespace PosUtil
