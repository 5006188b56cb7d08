// SPDX-License-Identifier: MIT
#include "probe/Services.h"

#include <unistd.h>

#include <atomic>
#include <cstring>
#include <exception>
#include <fstream>
#include <thread>
#include <vector>

namespace KAPProbe {

namespace {

struct Entry {
  const char* fInterface;
  const char* fMethod;
  const char* fProc;
};

std::string NameOf(const char* interfaceName, const char* methodName) {
  return std::string(interfaceName) + ", " + methodName;
}

KAPGetProcAddressProc gGetProc = nullptr;
std::vector<Entry> gInventory;
const char* gSubject[2] = {"", ""};

bool IsInInventory(const char* interfaceName, const char* methodName) {
  for (const Entry& entry : gInventory) {
    if (std::strcmp(entry.fInterface, interfaceName) == 0 &&
        std::strcmp(entry.fMethod, methodName) == 0) {
      return true;
    }
  }
  return false;
}

// The address space that the process uses, in bytes; 0 when it is unknown.
std::size_t UsedSpace() {
  std::ifstream file("/proc/self/statm");
  std::size_t pages = 0;
  file >> pages;
  return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace

void SetHost(KAPGetProcAddressProc getProcAddress) {
  gGetProc = getProcAddress;
  gInventory.clear();
  KAPHostInterfaceSet::ForEach([]<class Interface>() {
    for (const auto& entry : Interface::kEntries) {
      if (Find(Interface::kName, entry.fMethodName, entry.fProcName)) {
        gInventory.push_back({Interface::kName, entry.fMethodName, entry.fProcName});
      }
    }
  });
}

void SetSubject(const char* interfaceName, const char* methodName) {
  gSubject[0] = interfaceName;
  gSubject[1] = methodName;
}

std::string MissingProcedure() {
  for (const Entry& entry : gInventory) {
    if (!Find(entry.fInterface, entry.fMethod, entry.fProc)) {
      return NameOf(entry.fInterface, entry.fMethod);
    }
  }
  return "";
}

void* Find(const char* interfaceName, const char* methodName, const char* procName) {
  return gGetProc ? gGetProc(interfaceName, methodName, procName) : nullptr;
}

void* MustFind(const char* interfaceName, const char* methodName, const char* procName) {
  void* const proc = Find(interfaceName, methodName, procName);
  if (proc) return proc;
  const std::string name = NameOf(interfaceName, methodName);
  Expect(!IsInInventory(interfaceName, methodName), "the host no longer finds " + name);
  throw NotOffered(name);
}

void Need(bool isRight, const char* interfaceName, const char* methodName,
          const std::string& otherwise) {
  if (isRight) return;
  const bool isSubject =
      std::strcmp(interfaceName, gSubject[0]) == 0 && std::strcmp(methodName, gSubject[1]) == 0;
  if (isSubject) throw Broken(std::string(methodName) + ' ' + otherwise);
  throw Blocked(NameOf(interfaceName, methodName) + ' ' + otherwise);
}

std::string Returns(KAPError* error) {
  const Error owned(error);
  const Atom message(Call<KAPErrorInterface, "GetErrorMessage">(error));
  return message ? "returns the error \"" + TextOf(message) + '"' : "returns an error";
}

void MustFail(KAPError* error, const std::string& call) {
  const Error owned(error);
  Expect(owned, call + " returns no error");
}

Atom MakeAtom(const char* text) {
  Atom atom(Call<KAPStringInterface, "NewStringAtom">(text));
  Need<KAPStringInterface, "NewStringAtom">(atom, std::string("makes no atom of \"") + text + '"');
  return atom;
}

std::string TextOf(KAPStringAtom* atom) {
  const char* const text = Call<KAPStringInterface, "GetCString">(atom);
  Need<KAPStringInterface, "GetCString">(text, "returns null for an atom");
  return text;
}

// Sanitizers and hosts under test keep some of what was freed; only then is the long run needed.
void CheckNothingStays(const std::function<void()>& body) {
  const std::size_t before = UsedSpace();
  for (const std::size_t rounds : {std::size_t{80}, std::size_t{400}}) {
    for (std::size_t i = 0; i < rounds; ++i) body();
    if (UsedSpace() < before + rounds * kMebibyte * 3 / 4) return;
  }
  throw Broken("the process keeps what was given back");
}

void OnThreads(int count, const std::function<void(int)>& body) {
  static const bool isMultiThreaded = Call<KAPBinderInterface, "KAPIsMultiThreaded">() != 0;
  if (!isMultiThreaded) {
    throw NotOffered("several threads: KAPIsMultiThreaded returns 0");
  }
  std::atomic<int> waiting = count;
  std::vector<std::exception_ptr> thrown(static_cast<std::size_t>(count));
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting != 0) std::this_thread::yield();
      try {
        body(i);
      } catch (...) {
        thrown[static_cast<std::size_t>(i)] = std::current_exception();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::exception_ptr& each : thrown) {
    if (each) std::rethrow_exception(each);
  }
}

}  // namespace KAPProbe
