// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "POSDict.h"
#include "TestHost.h"

using Object = std::unique_ptr<KAPContainer, void (*)(KAPContainer*)>;
using OwnedAtom = std::unique_ptr<KAPStringAtom, void (*)(KAPStringAtom*)>;

// A host with the library loaded, and short ways to the procedures of property objects. At its end
// nothing may be held of the host, and every report must have been taken.
class World : public TestHost {
 public:
  World();

  template <class Interface, KAP_T_MT::TKAPName Method, class... Args>
  auto Call(Args... args) const {
    return Proc<Interface, Method>()(args...);
  }

  Object Own(KAPContainer* handle) const;
  OwnedAtom Key(const char* text) const;

  Object Number(double value) const;
  Object BinData(const char* typeName, const std::string& bytes) const;
  Object RawPointer(void* pointer, KAP_T_MT::POSReleaseProc release) const;
  Object Read(const char* text) const;  // from text notation; the test fails when it is none

  // 1.5, "s", one unit, three bytes, a pointer to `this`, [1 2 3 4] or {a: {b: [1 "s"]}}.
  Object OneOfKind(KAP_T_MT::POSType type) const;
  std::vector<Object> OneOfEachKind() const;

  // A container that no component made: its implementation, and its interface, have this name.
  Object Foreign(const char* name, void* instance = nullptr, KAPDeleteProc release = nullptr) const;
  Object EmptyContainer() const;

  void Put(const Object& dict, const char* key, const Object& value) const;
  void Remove(const Object& dict, const char* key) const;
  Object Get(const Object& dict, const char* key) const;
  Object DeepGet(const Object& dict, const char* path) const;
  void Empty(const Object& container) const;  // takes everything out of an array or a dictionary
  bool IsEqual(const Object& a, const Object& b) const;

  // What an object holds, all the way down: 1.5, "s", u(0041), type(010203), *, [1 ~ "s"], <a 1>.
  std::string Show(KAPContainer* object) const;
  std::string Show(const Object& object) const { return Show(object.get()); }

  // Moves the counter after which every method table is stale.
  void MoveUnregisterCounter();

 private:
  std::string ShowArray(KAPContainer* array) const;
  std::string ShowDict(KAPContainer* dict) const;

  KAPHost::Component fLibrary;
};

// World, with the test program bound to it as a client.
class ClientWorld : public World {
 public:
  ClientWorld() {
    EXPECT_TRUE(KAP_T_MT::KAPClientInit(GetProcAddress()));
    (void)KAP_T_MT::CPOSObject::CreateFromText("1", nullptr).Clone();  // as in World
  }
  ~ClientWorld() { KAP_T_MT::KAPClientTerminate(); }
};

class PosTest : public ::testing::Test, protected World {};
class WrapperTest : public ::testing::Test, protected ClientWorld {};

// Whether one of the texts contains the word.
bool AnyContains(const std::vector<std::string>& texts, const std::string& word);
