#include "DocumentArgument.h"

#include <CLI/CLI.hpp>

#include "Failure.h"
#include "HeapReserve.h"
#include "Printable.h"
#include "Source.h"

namespace PosUtil {

namespace {

// What property objects take, compared with their text.
constexpr std::size_t kHeapPerByte = 10;

template <class Format>
std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const Format* format : Format::All()) names.emplace_back(format->kName);
  return names;
}

template <class Format>
void DeclareFormat(CLI::App& options, const char* name, std::string& format,
                   const std::string& description) {
  options.add_option(name, format, description)
      ->check(CLI::IsMember(Names<Format>()))
      ->option_text(CLI::detail::join(Names<Format>(), "|"));
}

std::string ListOfEndings() {
  std::string text;
  for (const Reader* reader : Reader::All()) {
    text += (text.empty() ? "" : "; ") + std::string(reader->kName) + " for " +
            std::string(reader->kEndings);
  }
  return text;
}

}  // namespace

void DocumentArgument::Declare(CLI::App& options) {
  options.add_option("FILE", fFile, "The document, - for standard input")
      ->required()
      ->option_text(" ");
  DeclareFormat<Reader>(options, "--from", fFormat,
                        "Format of FILE; else its ending tells (" + ListOfEndings() + ")");
}

const Reader& DocumentArgument::ChosenReader() const {
  const Reader* const reader =
      fFormat.empty() ? Reader::ForFile(fFile) : FindFormat<Reader>(fFormat);
  if (!reader) {
    throw Failure(Printable(fFile) + ": the name does not tell the format; say it with --from",
                  kExitUsage);
  }
  return *reader;
}

KAP_T_MT::CPOSObject DocumentArgument::Read(Session& session) {
  const Reader& reader = ChosenReader();
  const Source source = Source::Read(fFile);
  fName = source.Name();
  ReserveHeap(kHeapPerByte * source.Bytes().size());
  Library& library = session.TheLibrary();
  try {
    KAP_T_MT::CPOSObject object = reader.Read(source);
    library.CheckReports(fName);
    return object;
  } catch (const Failure&) {
    library.CheckReports(fName);  // what the library has to say is the cause
    throw;
  }
}

void DeclareTo(CLI::App& options, std::string& format, const char* description) {
  DeclareFormat<Writer>(options, "--to", format, description);
}

}  // namespace PosUtil
