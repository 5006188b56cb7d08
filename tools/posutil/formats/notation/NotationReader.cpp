// The reader of text notation: the library does the work.

#include <cstring>

#include "base/SyntaxError.h"
#include "formats/SourceReader.h"

namespace PosUtil {

namespace {

class NotationReader final : public SourceReader {
 public:
  NotationReader() : SourceReader(1, "text", ".txt .text .pos") {}

 private:
  KAP_T_MT::CPOSObject Read(const Source& source) const override {
    const std::string_view bytes = source.Bytes();
    const char* end = nullptr;
    KAP_T_MT::CPOSObject object = KAP_T_MT::CPOSObject::CreateFromText(source.Text(), &end);
    // A zero byte is the end of the text to the library.
    const std::size_t length = std::strlen(source.Text());
    const std::size_t stop = end ? static_cast<std::size_t>(end - source.Text()) : length;
    if (stop == length && length < bytes.size()) {
      throw source.ErrorAt(length, "a zero character in the text");
    }
    if (object.IsNull()) throw source.ErrorAt(stop, Message(bytes, stop));
    return object;
  }

  // The library returns the position of an error, but no reason.
  static const char* Message(std::string_view bytes, std::size_t stop) {
    if (stop < bytes.size()) return "syntax error";
    return bytes.find_first_not_of(" \t\r\n") == std::string_view::npos
               ? "no object in the text"
               : "syntax error at the end of the text";
  }
} gNotationReader;

}  // namespace

}  // namespace PosUtil
