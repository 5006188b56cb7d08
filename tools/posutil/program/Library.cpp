#include "program/Library.h"

#include <unistd.h>

#include <filesystem>

#include "formats/Printable.h"
#include "kap/KAPClient.h"
#include "program/Failure.h"

namespace PosUtil {

namespace {

constexpr char kLibraryName[] = "libKAPUtils.so";

std::string Locate() {
  std::error_code error;
  const std::filesystem::path folder =
      std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  for (const auto& candidate : {folder / ".." / "lib" / kLibraryName, folder / kLibraryName}) {
    if (::access(candidate.c_str(), R_OK) == 0) return candidate.lexically_normal().string();
  }
  throw Failure(std::string(kLibraryName) + " is neither in " +
                (folder / ".." / "lib").lexically_normal().string() + " nor in " + folder.string() +
                "; say where it is with --library");
}

KAPHost::Component Load(KAPHost::Host& host, const std::string& path) {
  try {
    return host.Load(path.empty() ? Locate() : path);
  } catch (const KAPHost::LoadError& error) {
    throw Failure(error.what());
  }
}

}  // namespace

std::string ReportText(const std::string& about, const std::string& report) {
  return (about.empty() ? "" : Printable(about) + ": ") +
         "the library reports: " + Printable(report);
}

Library::Binding::Binding(KAPGetProcAddressProc getProcAddress) {
  if (KAP_T_MT::KAPClientInit(getProcAddress)) return;
  KAP_T_MT::KAPClientTerminate();
  throw Failure("cannot bind to the host");
}

Library::Binding::~Binding() { KAP_T_MT::KAPClientTerminate(); }

Library::Library(const std::string& path)
    : fComponent(Load(fHost, path)), fBinding(fHost.GetProcAddress()) {}

void Library::CheckReports(const std::string& about) {
  std::string text;
  for (const std::string& report : TakeReports()) {
    text += (text.empty() ? "" : "\n") + ReportText(about, report);
  }
  if (!text.empty()) throw Failure(text);
}

}  // namespace PosUtil
