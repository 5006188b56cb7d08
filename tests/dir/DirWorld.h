// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "KAPUtilsDir.h"
#include "TestHost.h"
#include "kap/KAPClient.h"

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
using Body = std::function<void()>;

// A host with the library loaded, the test program bound to it as a client, and a temporary
// directory in which no file may be left at the end.
class DirWorld : public TestHost {
 public:
  DirWorld() {
    EXPECT_NE(::mkdtemp(fFolder.data()), nullptr);
    ::setenv("TMPDIR", fFolder.c_str(), 1);
    EXPECT_TRUE(KAP_T_MT::KAPClientInit(GetProcAddress()));
  }
  ~DirWorld() {
    KAP_T_MT::KAPClientTerminate();
    EXPECT_EQ(Names(), Texts());
    fs::remove_all(fFolder);
    ::unsetenv("TMPDIR");
  }

  // After which every table is stale.
  void MoveCounter() {
    Register("Passing", "Method", "Proc", this);
    Unregister("Passing");
  }

  std::string Path(const std::string& name) const { return fFolder + "/" + name; }
  bool Remove(const std::string& name) const { return fs::remove(Path(name)); }
  Texts Names() const {
    Texts names;
    for (const auto& entry : fs::directory_iterator(fFolder))
      names.push_back(entry.path().filename());
    return names;
  }

 private:
  KAPHost::Component fLibrary{Load(KAP_LIBRARY_PATH)};
  std::string fFolder = testing::TempDir() + "dir_test.XXXXXX";
};

class DirTest : public ::testing::Test, protected DirWorld {};

inline KAP_T_MT::CKAPStringAtom Text(const std::string& text) {
  return KAP_T_MT::CKAPStringAtom(text.c_str());
}

// Whether the body throws an exception.
inline bool Fails(const Body& body) {
  try {
    body();
    return false;
  } catch (const std::exception&) {
    return true;
  }
}
