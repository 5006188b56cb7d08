// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

#include "HostTap.h"
#include "OwnProcess.h"
#include "dir/KAPUtilsDirInterfaces.h"
#include "pos/POSInterfaces.h"
#include "pos/POSStreamerInterfaces.h"
#include "pos/POSValidatorInterfaces.h"

// Ends that a host does not plan for, each in a process of its own. A call of a host that may be
// gone ends that process with another status.

namespace {

using namespace KAP_T_MT;

struct World {
  std::optional<KAPHost::Host> fHost;
  std::optional<HostTap> fTap;
  std::optional<KAPHost::Component> fLibrary;
  std::vector<KAPContainer*> fObjects;

  template <class Interface, TKAPName Method, class... Args>
  auto Call(Args... args) {
    return fHost->Proc<Interface, Method>()(args...);
  }
  KAPContainer* Keep(KAPContainer* object) { return fObjects.emplace_back(object); }
  KAPContainer* Read(const char* text) {
    return Keep(Call<POSObjectStatics, "CreateFromText">(text, nullptr));
  }

  // Holds one object of each kind that holds something of the host.
  World() {
    fHost.emplace(KAPHost::HostOptions{.fOnReport = {}, .fOnLeak = [](const auto&) {}});
    fTap.emplace(*fHost);
    fLibrary.emplace(KAP_LIBRARY_PATH);
    EXPECT_TRUE(fLibrary->Initialize(&HostTap::GetProc));
    for (const char* text : {"1", "(text)", "`0041`"}) Read(text);
    Keep(Call<POSBinDataInterface, "NewPOSBinData">("t", nullptr, 0ul));
    Keep(Call<POSRawPointerInterface, "NewPOSRawPointer">(nullptr, [](void*) {}));
    Keep(Call<POSObjectInterface, "Clone">(Read("[1 (text)]")));  // fills the method tables
    KAPContainer* dict = Read("<Key [1 <kKey 2>]>");
    Keep(Call<POSDictIteratorInterface, "NewPOSDictIterator">(dict));
    Keep(Call<POSStructValidatorInterface, "NewPOSStructValidator">(dict));
    Keep(Call<POSStreamerInterface, "NewPOSStreamer">());
    Call<KAPUtilsDirInterface, "GetTempDir">(&fObjects.emplace_back());
  }
};

// Never destroyed, unlike a static object.
World& MakeWorld() { return *new World; }

TEST(LibraryExitTest, ExitWithoutTerminate) {
  for (const bool hostGoes : {false, true}) {
    ExpectGoodExit([&] {
      World& world = MakeWorld();
      if (hostGoes) world.fHost.reset();
      HostTap::Forbid();
    });
  }
}

TEST(LibraryExitTest, UnloadedWithoutTerminate) {
  ExpectGoodExit([] {
    MakeWorld();
    HostTap::Forbid();
    void* library = dlopen(KAP_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD);
    dlclose(library);
    dlclose(library);
    EXPECT_EQ(dlopen(KAP_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD), nullptr);
  });
}

// What the library keeps for a thread does not keep the library, and nothing of it runs when the
// thread ends.
TEST(LibraryExitTest, UnloadedWhileThreadsLive) {
  ExpectGoodExit([] {
    World& world = MakeWorld();
    std::mutex calls;  // the tap is for one thread at a time
    std::atomic<int> ready = 0;
    std::atomic<bool> unloaded = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&] {
        {
          const std::lock_guard lock(calls);
          KAPContainer* const object =
              world.Call<POSObjectStatics, "CreateFromText">("<Key [1 [(text)]]>", nullptr);
          EXPECT_TRUE((world.Call<POSObjectInterface, "IsEqual">(object, object)));
          world.Call<KAPContainerInterface, "Release">(object);
        }
        ++ready;
        while (!unloaded) std::this_thread::yield();
      });
    }
    while (ready != 8) std::this_thread::yield();
    HostTap::Forbid();
    void* library = dlopen(KAP_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD);
    dlclose(library);
    dlclose(library);
    EXPECT_EQ(dlopen(KAP_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD), nullptr);
    unloaded = true;
    for (std::thread& thread : threads) thread.join();
  });
}

// Their release procedures still run, in a library that is not bound.
TEST(LibraryExitTest, ObjectsOutliveTermination) {
  for (const bool counterMoves : {false, true}) {
    ExpectGoodExit([&] {
      World& world = MakeWorld();
      world.fLibrary->Terminate();
      if (counterMoves) {
        world.fHost->Register("Passing", "Method", "Proc", &world);
        world.fHost->Unregister("Passing");
      }
      HostTap::Clear();
      for (KAPContainer* object : world.fObjects) {
        world.Call<KAPContainerInterface, "Release">(object);
      }
      EXPECT_EQ(HostTap::TakeCalls().size(), world.fObjects.size());  // these and no others
      EXPECT_EQ(HostTap::TakeLookUps(), Log());
    });
  }
}

}  // namespace
