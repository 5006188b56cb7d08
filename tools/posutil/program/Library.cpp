// SPDX-License-Identifier: MIT
#include "program/Library.h"

#include <unistd.h>

#include <filesystem>

#include "base/Failure.h"
#include "base/Printable.h"

namespace PosUtil {

namespace {

constexpr char kLibraryName[] = "libKAPUtils.so";

// Where the library is, relative to this program: the installed plug-in, then the places of a build.
constexpr const char* kLibraryFolders[] = {KAP_PLUGIN_FOLDER, "../lib", "."};

std::string Locate() {
  std::error_code error;
  const std::filesystem::path folder =
      std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  std::string places;
  for (const char* const place : kLibraryFolders) {
    const auto candidate = (folder / place / kLibraryName).lexically_normal();
    if (::access(candidate.c_str(), R_OK) == 0) return candidate.string();
    places += (places.empty() ? "" : ", ") + candidate.parent_path().string();
  }
  throw Failure(std::string(kLibraryName) + " is in none of " + places + "; use --library");
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
