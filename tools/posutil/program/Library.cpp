// SPDX-License-Identifier: MIT
#include "program/Library.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include "base/Failure.h"
#include "base/Printable.h"
#include "dir/KAPUtilsDirInterfaces.h"
#include "pos/POSInterfaceSets.h"
#include "pos/POSKinds.h"

namespace PosUtil {

namespace {

constexpr char kLibraryName[] = "libKAPUtils.so";

// Where the library is, relative to this program: the installed plug-in, then the places of a
// build.
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

// The kind of a property object, for the trace. A procedure is asked and not a wrapper: the
// wrappers may be in the middle of what is traced.
std::string KindOf(const KAPHost::Host& host, const char* signature, KAPContainer* object) {
  if (!signature || std::string_view(signature) != "POSObjectImpl") return "";
  const auto getType = host.Proc<KAP_T_MT::POSObjectInterface, "GetType">();
  const char* const kind = getType ? KAP_T_MT::POSTypeName(getType(object)) : nullptr;
  return kind ? kind : "";
}

// Of the process: the trace ends after everything else.
std::atomic<bool> gIsTraceLost = false;

}  // namespace

bool IsTraceLost() noexcept { return gIsTraceLost; }

std::string ReportText(const std::string& about, const std::string& report) {
  return (about.empty() ? "" : Printable(about) + ": ") +
         "the library reports: " + Printable(report);
}

KAPHost::HostOptions Library::Options(const std::string& trace) {
  KAPHost::HostOptions options;
  options.fDebug.fTrace = trace;
  options.fDebug.fOnLost = [](const std::string& message) {
    std::fprintf(stderr, "posutil: %s\n", message.c_str());
    gIsTraceLost = true;
  };
  options.fDebug.fDeclared =
      KAPHost::Declare<KAP_T_MT::POSInterfaceSet, KAP_T_MT::POSStreamerInterfaceSet,
                       KAP_T_MT::POSValidatorInterfaceSet, KAP_T_MT::KAPUtilsDirInterfaceSet>();
  options.fDebug.fKindOf = [this](const char* signature, KAPContainer* object) {
    return KindOf(fHost, signature, object);
  };
  return options;
}

Library::Library(const std::string& path, const std::string& trace)
    : fHost(Options(trace)), fComponent(Load(fHost, path)), fClient(fHost.GetProcAddress()) {}

void Library::CheckReports(const std::string& about) {
  std::string text;
  for (const std::string& report : TakeReports()) {
    text += (text.empty() ? "" : "\n") + ReportText(about, report);
  }
  if (!text.empty()) throw Failure(text);
}

}  // namespace PosUtil
