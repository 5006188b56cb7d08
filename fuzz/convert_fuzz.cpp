// SPDX-License-Identifier: MIT

// Documents in all formats of posutil: what is read and written in another format can be read
// again, is equal, and is written the same again. A format may reject a document.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Expect.h"
#include "base/Failure.h"
#include "files/Descriptor.h"
#include "formats/Format.h"
#include "program/Session.h"

namespace {

using namespace PosUtil;
using KAP_T_MT::CPOSObject;

// The session of the process. It loads the library in its constructor: at exit the library then
// ends after it.
Session& TheSession() {
  struct LoadedSession : Session {
    LoadedSession() {
      LibraryPath() = KAP_LIBRARY_PATH;
      TheLibrary();
    }
  };
  static LoadedSession session;
  return session;
}

// A document in memory that has a path.
class MemoryFile {
 public:
  MemoryFile() : fFile(::memfd_create("document", MFD_CLOEXEC)) {}
  explicit MemoryFile(std::string_view content) : MemoryFile() {
    const ssize_t size = ::write(fFile.Get(), content.data(), content.size());
    Expect(size == static_cast<ssize_t>(content.size()), "memory holds the document");
  }

  std::string Path() const { return "/proc/self/fd/" + std::to_string(fFile.Get()); }
  int NewDescriptor() const { return ::dup(fFile.Get()); }
  std::string Content() const {
    std::string content(static_cast<std::size_t>(::lseek(fFile.Get(), 0, SEEK_END)), '\0');
    const ssize_t size = ::pread(fFile.Get(), content.data(), content.size(), 0);
    Expect(size == static_cast<ssize_t>(content.size()), "memory returns the document");
    return content;
  }

 private:
  Descriptor fFile;
};

// Null if the reader rejects the document.
CPOSObject Read(const Reader& reader, std::string_view document) {
  const MemoryFile file(document);
  CPOSObject object;
  try {
    object = reader.Open(file.Path(), Extent::kOne, Text::kDropped, TheSession())->Next();
    TheSession().TheLibrary().CheckReports("");
  } catch (const Failure&) {
    TheSession().TheLibrary().TakeReports();
    return {};
  }
  return object;
}

// Nothing if the writer rejects the object.
std::optional<std::string> Written(const Writer& writer, const CPOSObject& object) {
  const MemoryFile file;
  Output out(file.NewDescriptor());
  try {
    writer.Write(object, "document", {}, out);
  } catch (const Failure&) {
    out.Finish();
    Expect(TheSession().TheLibrary().TakeReports().empty(),
           "the writer rejects it, not the library");
    return std::nullopt;
  }
  out.Finish();
  Expect(TheSession().TheLibrary().TakeReports().empty(), "a written object has no report");
  return file.Content();
}

void ConvertToAll(const CPOSObject& object) {
  for (const Reader* reader : Reader::All()) {
    const Writer& writer = *FindFormat<Writer>(reader->kName);
    const auto document = Written(writer, object);
    if (!document) continue;
    const CPOSObject read = Read(*reader, *document);
    Expect(!read.IsNull(), "a written document can be read");
    Expect(read.IsEqual(object) && object.IsEqual(read), "the object read equals the one written");
    Expect(Written(writer, read) == document, "the object is written the same again");
  }
}

void ReadAndConvert(std::string_view input) {
  const auto readers = Reader::All();
  const std::size_t choice = input.empty() ? 0 : static_cast<unsigned char>(input.front());
  if (!input.empty()) input.remove_prefix(1);
  const CPOSObject object = Read(*readers[choice % readers.size()], input);
  if (!object.IsNull()) ConvertToAll(object);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(
    const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  static BalancedRuns runs(TheSession().TheLibrary().Host());
  runs.Run([input] { ReadAndConvert(input); });
  return 0;
}
