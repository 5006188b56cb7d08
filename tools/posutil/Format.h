#pragma once

#include <string>
#include <string_view>

#include "Output.h"
#include "Registered.h"
#include "Source.h"
#include "Style.h"
#include "pos/POSObject.h"

namespace PosUtil {

// A format that documents are read from. One static object per format.
class Reader : public Registered<Reader> {
 public:
  // `endings` are those of file names, such as ".json", with a space between two.
  Reader(int order, const char* name, std::string_view endings)
      : Registered(order), kName(name), kEndings(endings) {}

  // Makes the object. Throws SyntaxError, or another Failure; the caller asks for reports.
  virtual KAP_T_MT::CPOSObject Read(const Source& source) const = 0;

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
  Writer(int order, const char* name) : Registered(order), kName(name) {}

  // Writes the object, without a line feed at the end. Throws Failure; `document` is the name to be used in it. What
  // was put into `out` before a failure is worth nothing.
  virtual void Write(const KAP_T_MT::CPOSObject& object, const std::string& document,
                     const WriteOptions& options, Output& out) const = 0;

  const char* const kName;

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
