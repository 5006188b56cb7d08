// SPDX-License-Identifier: MIT
#include <cstdint>
#include <cstring>

#include "probe/Checks.h"
#include "probe/Services.h"

namespace KAPProbe {

namespace {

using Containers = KAPContainerInterface;

// An instance that counts its deletions.
struct Instance {
  int fDeleted = 0;
  static void Delete(void* instance) { ++static_cast<Instance*>(instance)->fDeleted; }
};

Container Make(Instance& instance, const char* instanceName = "KAPProbeImpl",
               const char* interfaceName = "KAPProbeTrialInterface") {
  Container container;
  MustSucceed(Call<Containers, "NewFullContainer">(container.Place(), static_cast<void*>(&instance),
                                                   MakeAtom(instanceName), MakeAtom(interfaceName),
                                                   &Instance::Delete),
              "NewFullContainer");
  Expect(container, "NewFullContainer returns neither a container nor an error");
  return container;
}

void Add(KAPContainer* container, const char* name, Instance& instance) {
  MustSucceed(Call<Containers, "RegisterInstance">(
                  container, MakeAtom(name), static_cast<void*>(&instance), &Instance::Delete),
              "RegisterInstance");
}

void AddInterface(KAPContainer* container, const char* instanceName, const char* interfaceName) {
  MustSucceed(Call<Containers, "RegisterInterface">(container, MakeAtom(instanceName),
                                                    MakeAtom(interfaceName)),
              "RegisterInterface");
}

void* InstanceOf(KAPContainer* container, const char* name) {
  return Call<Containers, "GetInstance">(container, MakeAtom(name));
}

// The two public words of a record.
struct PublicWords {
  void* fPrimary;
  const char* fSignature;
};

PublicWords WordsOf(KAPContainer* container) {
  const long offset = Call<Containers, "GetOffsetToPrimaryInstance">();
  PublicWords words;
  std::memcpy(&words, reinterpret_cast<const char*>(container) + offset, sizeof words);
  return words;
}

// Interfaces of the binder that exist during one check, with the method "M".
class TrialInterface {
 public:
  TrialInterface(const char* name, void* proc) : fName(name) {
    Expect(Call<KAPBinderInterface, "KAPRegisterProcAddress">(name, "M", "P", proc) != 0,
           "KAPRegisterProcAddress returns 0");
  }
  TrialInterface(const TrialInterface&) = delete;
  TrialInterface& operator=(const TrialInterface&) = delete;
  ~TrialInterface() {
    try {
      Call<KAPBinderInterface, "KAPUnregisterInterface">(fName);
    } catch (const NotOffered&) {  // another check says so
    }
  }

 private:
  const char* fName;
};

int gFirst, gSecond;

void* MethodOf(KAPContainer* container, const char* method) {
  void* proc = &gFirst;
  MustSucceed(Call<Containers, "GetMethod">(&proc, container, MakeAtom(method), MakeAtom("P"), 1),
              "GetMethod");
  return proc;
}

// A result that an error must clear.
void* Garbage() { return &gSecond; }

void CheckAnErrorClearsThePlace() {
  KAPContainer* clone = static_cast<KAPContainer*>(Garbage());
  MustFail(Call<Containers, "CloneContainer">(&clone, nullptr), "CloneContainer of null");
  Expect(!clone, "the result place of a failed call is not null");
  void* method = Garbage();
  MustFail(Call<Containers, "GetMethod">(&method, nullptr, nullptr, nullptr, 1),
           "GetMethod of null");
  Expect(!method, "the result place of a failed call is not null");
}

void CheckANullPlaceIsAnError() {
  Instance instance;
  MustFail(Call<Containers, "NewFullContainer">(
               nullptr, static_cast<void*>(&instance), MakeAtom("KAPProbeImpl"),
               MakeAtom("KAPProbeTrialInterface"), &Instance::Delete),
           "NewFullContainer without a result place");
  Expect(instance.fDeleted == 0, "a call that returns an error deletes the instance");
}

// Takes a reference to its own container while that is being destroyed.
struct Reviver {
  KAPContainer* fContainer = nullptr;
  bool fIsRevived = false;
  static void Delete(void* data) {
    auto* const self = static_cast<Reviver*>(data);
    self->fIsRevived = Call<Containers, "AddRef">(self->fContainer);
  }
};

void CheckADyingContainerTakesNoReference() {
  Expect(!Call<Containers, "AddRef">(nullptr), "AddRef of null returns true");
  Reviver reviver;
  Container container;
  MustSucceed(Call<Containers, "NewFullContainer">(
                  container.Place(), static_cast<void*>(&reviver), MakeAtom("KAPProbeImpl"),
                  MakeAtom("KAPProbeTrialInterface"), &Reviver::Delete),
              "NewFullContainer");
  reviver.fContainer = container;
  container.Reset();
  Expect(!reviver.fIsRevived, "AddRef of a container that is being destroyed returns true");
}

constexpr Check kChecks[] = {
    {"containers.primary", "KAPContainerInterface", "NewFullContainer",
     "A container with `instance` as its primary one: one reference.",
     [] {
       Instance instance;
       Container container = Make(instance);
       Expect(InstanceOf(container, "KAPProbeImpl") == &instance,
              "GetInstance does not find the instance under its name");
       container.Reset();
       Expect(instance.fDeleted == 1, "the first release deletes the instance " +
                                          std::to_string(instance.fDeleted) + " times");
     }},
    {"containers.last-release", "KAPContainerInterface", "NewFullContainer",
     "The last release passes the instance to `deleteInstance`, which may be null.",
     [] {
       Instance instance;
       Container container = Make(instance);
       Expect(Call<Containers, "AddRef">(container), "AddRef of a live container returns false");
       Container second(container.Get());
       container.Reset();
       Expect(instance.fDeleted == 0, "the instance is deleted while a reference is left");
       second.Reset();
       Expect(instance.fDeleted == 1, "the last release does not delete the instance once");
     }},
    {"containers.words", "KAPContainerInterface", "GetOffsetToPrimaryInstance",
     "The offset of the primary instance within a container record, in bytes; the same for all"
     " containers of a host.",
     [] {
       Instance instances[3];
       for (Instance& instance : instances) {
         const Container container = Make(instance);
         Expect(WordsOf(container).fPrimary == &instance,
                "the word at the offset is not the primary instance");
       }
     }},
    {"containers.signature-word", "KAPContainerInterface", "GetOffsetToPrimaryInstance",
     "The signature is the text pointer of the instance name's atom, null for a container without"
     " one.",
     [] {
       Instance instance;
       const Container container = Make(instance);
       const Atom name = MakeAtom("KAPProbeImpl");
       Expect(WordsOf(container).fSignature == Call<KAPStringInterface, "GetCString">(name),
              "the word after the primary instance is not the signature");
       Container empty;
       MustSucceed(Call<Containers, "NewContainer">(empty.Place()), "NewContainer");
       Expect(!WordsOf(empty).fPrimary && !WordsOf(empty).fSignature,
              "the words of an empty container are not null");
     }},
    {"containers.signature", "KAPContainerInterface", "GetSignature",
     "The name of the primary instance: a new reference; null when it has none.",
     [] {
       Instance instance;
       const Container container = Make(instance);
       Expect(TextOf(Atom(Call<Containers, "GetSignature">(container))) == "KAPProbeImpl",
              "GetSignature returns another name");
     }},
    {"containers.empty", "KAPContainerInterface", "NewContainer",
     "The first registered instance becomes the primary one.",
     [] {
       Instance first, second;
       Container container;
       MustSucceed(Call<Containers, "NewContainer">(container.Place()), "NewContainer");
       Add(container, "KAPProbeFirst", first);
       Add(container, "KAPProbeSecond", second);
       Expect(WordsOf(container).fPrimary == &first, "another instance is the primary one");
     }},
    {"containers.instances", "KAPContainerInterface", "RegisterInstance",
     "Adds an instance under a name of its own.",
     [] {
       Instance instances[3];
       Container container = Make(instances[0]);
       Add(container, "KAPProbeSecond", instances[1]);
       Add(container, "KAPProbeThird", instances[2]);
       Expect(InstanceOf(container, "KAPProbeImpl") == &instances[0] &&
                  InstanceOf(container, "KAPProbeSecond") == &instances[1] &&
                  InstanceOf(container, "KAPProbeThird") == &instances[2],
              "GetInstance does not find one of three instances under its name");
       Expect(WordsOf(container).fPrimary == &instances[0], "the primary instance changes");
       container.Reset();
       for (const Instance& instance : instances) {
         Expect(instance.fDeleted == 1, "the last release does not delete each instance once");
       }
     }},
    {"containers.no-instance", "KAPContainerInterface", "GetInstance",
     "The instance of that name, borrowed; null when there is none, or when the call fails.",
     [] {
       Instance instance;
       const Container container = Make(instance);
       Expect(!InstanceOf(container, "KAPProbeOther"), "GetInstance finds an unknown name");
       Expect(!Call<Containers, "GetInstance">(nullptr, nullptr), "null has an instance");
     }},
    {"containers.no-instance-no-error", "KAPContainerInterface", "NGetInstance",
     "As GetInstance, but distinguishes a failure: null and no error when the container has no"
     " instance of that name.",
     [] {
       Instance instance;
       const Container container = Make(instance);
       void* found = Garbage();
       MustSucceed(Call<Containers, "NGetInstance">(&found, container, MakeAtom("KAPProbeOther")),
                   "NGetInstance of an unknown name");
       Expect(!found, "NGetInstance finds an unknown name");
       MustSucceed(Call<Containers, "NGetInstance">(&found, container, MakeAtom("KAPProbeImpl")),
                   "NGetInstance");
       Expect(found == &instance, "NGetInstance does not find the instance");
     }},
    {"containers.method", "KAPContainerInterface", "GetMethod",
     "The procedure registered under these names for one of the container's interfaces; null and no"
     " error when there is none.",
     [] {
       const TrialInterface registered("KAPProbeTrialInterface", &gFirst);
       Instance instance;
       const Container container = Make(instance);
       Expect(MethodOf(container, "M") == &gFirst, "GetMethod does not find the procedure");
       Expect(!MethodOf(container, "N"), "GetMethod finds an unknown procedure");
     }},
    {"containers.interfaces", "KAPContainerInterface", "RegisterInterface",
     "GetMethod searches the interface registered last first.",
     [] {
       const TrialInterface base("KAPProbeTrialInterface", &gFirst);
       const TrialInterface derived("KAPProbeDerivedInterface", &gSecond);
       Instance instance;
       const Container container = Make(instance);
       AddInterface(container, "KAPProbeImpl", "KAPProbeDerivedInterface");
       Expect(MethodOf(container, "M") == &gSecond,
              "GetMethod finds the procedure of the interface registered first");
     }},
    {"containers.parent-method", "KAPContainerInterface", "GetParentMethod",
     "As GetMethod, but searches only the interfaces registered before those of `instanceName`:"
     " what the instance overrides.",
     [] {
       const TrialInterface base("KAPProbeTrialInterface", &gFirst);
       const TrialInterface derived("KAPProbeDerivedInterface", &gSecond);
       Instance instance, other;
       const Container container = Make(instance);
       Add(container, "KAPProbeDerived", other);
       AddInterface(container, "KAPProbeDerived", "KAPProbeDerivedInterface");
       void* found = Garbage();
       const auto getParent = [&](const char* name) {
         MustSucceed(Call<Containers, "GetParentMethod">(&found, container, MakeAtom(name),
                                                         MakeAtom("M"), MakeAtom("P")),
                     "GetParentMethod");
         return found;
       };
       Expect(getParent("KAPProbeDerived") == &gFirst,
              "GetParentMethod does not find what the instance overrides");
       Expect(!getParent("KAPProbeImpl"), "the first instance overrides something");
     }},
    {"containers.clone", "KAPContainerInterface", "CloneContainer",
     "A container with the same instances and interfaces, which holds a reference to `container`:"
     " one reference.",
     [] {
       const TrialInterface registered("KAPProbeTrialInterface", &gFirst);
       Instance instance, other;
       Container container = Make(instance);
       Add(container, "KAPProbeSecond", other);
       Container clone;
       MustSucceed(Call<Containers, "CloneContainer">(clone.Place(), container), "CloneContainer");
       Expect(clone != container, "the clone is the container itself");
       container.Reset();
       Expect(instance.fDeleted == 0, "an instance is deleted although the clone lives");
       Expect(InstanceOf(clone, "KAPProbeImpl") == &instance &&
                  InstanceOf(clone, "KAPProbeSecond") == &other &&
                  WordsOf(clone).fPrimary == &instance,
              "the clone has other instances");
       Expect(MethodOf(clone, "M") == &gFirst, "the clone has other interfaces");
       clone.Reset();
       Expect(instance.fDeleted == 1 && other.fDeleted == 1,
              "the clone's last release does not delete each instance once");
     }},
    {"containers.references", "KAPContainerInterface", "AddRef",
     "False: no reference was added, because the handle is null or the container is being"
     " destroyed.",
     &CheckADyingContainerTakesNoReference},
    {"containers.count", "KAPContainerInterface", "DebugGetRefCountAddr",
     "The address of the reference count, borrowed while the container lives.",
     [] {
       Instance instance;
       const Container container = Make(instance);
       const volatile int* const count = Call<Containers, "DebugGetRefCountAddr">(container);
       Expect(count && *count == 1, "a new container has no count of 1");
       Call<Containers, "AddRef">(container);
       Expect(*count == 2, "the count after AddRef is " + std::to_string(*count));
       Call<Containers, "Release">(container);
       Expect(*count == 1, "the count after Release is " + std::to_string(*count));
     }},
    {"containers.decrement", "KAPContainerInterface", "DecrementWithoutDelete",
     "Releases one reference without deleting the container, even if it was the last one.",
     [] {
       Instance instance;
       Container container = Make(instance);
       KAPContainer* const unowned = container.Detach();
       Call<Containers, "DecrementWithoutDelete">(unowned);
       Expect(instance.fDeleted == 0, "the container is deleted");
       Call<Containers, "DeleteUnownedContainer">(unowned);
       Expect(instance.fDeleted == 1, "DeleteUnownedContainer does not delete it");
     }},
    {"containers.owned", "KAPContainerInterface", "DeleteUnownedContainer",
     "Deletes a container that has no reference; otherwise does nothing.",
     [] {
       Instance instance;
       const Container container = Make(instance);
       Call<Containers, "DeleteUnownedContainer">(container);
       Expect(instance.fDeleted == 0, "a container with a reference is deleted");
     }},
    {"containers.null", "KAPContainerInterface", "Release",
     "Releases one reference; null is ignored.",
     [] {
       Call<Containers, "Release">(nullptr);
       Call<Containers, "DecrementWithoutDelete">(nullptr);
       Call<Containers, "DeleteUnownedContainer">(nullptr);
     }},
    {"containers.error-place", "KAPContainerInterface", "CloneContainer",
     "After an error the result places are null or 0.", &CheckAnErrorClearsThePlace},
    {"containers.null-place", "KAPContainerInterface", "NewFullContainer",
     "A null result place is an error, and nothing is done.", &CheckANullPlaceIsAnError},
};

}  // namespace

std::span<const Check> ContainerChecks() { return kChecks; }

}  // namespace KAPProbe
