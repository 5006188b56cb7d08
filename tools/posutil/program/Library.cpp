#include "program/Library.h"

#include <unistd.h>

#include <filesystem>

#include "base/Failure.h"
#include "base/Printable.h"

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
                "; use --library");
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

Library::Library(const std::string& path)
    : fComponent(Load(fHost, path)), fClient(fHost.GetProcAddress()) {}

void Library::CheckReports(const std::string& about) {
  std::string text;
  for (const std::string& report : TakeReports()) {
    text += (text.empty() ? "" : "\n") + ReportText(about, report);
  }
  if (!text.empty()) throw Failure(text);
}

}  // namespace PosUtil
