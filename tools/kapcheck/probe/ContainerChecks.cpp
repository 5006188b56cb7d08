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
  Do<Containers, "NewFullContainer">(container.Place(), static_cast<void*>(&instance),
                                     MakeAtom(instanceName), MakeAtom(interfaceName),
                                     &Instance::Delete);
  Need<Containers, "NewFullContainer">(container, "returns neither a container nor an error");
  return container;
}

Container MakeEmpty() {
  Container container;
  Do<Containers, "NewContainer">(container.Place());
  Need<Containers, "NewContainer">(container, "returns neither a container nor an error");
  return container;
}

Container CloneOf(KAPContainer* container) {
  Container clone;
  Do<Containers, "CloneContainer">(clone.Place(), container);
  Need<Containers, "CloneContainer">(clone, "returns neither a container nor an error");
  return clone;
}

void Add(KAPContainer* container, const char* name, Instance& instance) {
  Do<Containers, "RegisterInstance">(container, MakeAtom(name), static_cast<void*>(&instance),
                                     &Instance::Delete);
}

void AddInterface(KAPContainer* container, const char* instanceName, const char* interfaceName) {
  Do<Containers, "RegisterInterface">(container, MakeAtom(instanceName), MakeAtom(interfaceName));
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
    const int result = Call<KAPBinderInterface, "KAPRegisterProcAddress">(name, "M", "P", proc);
    Need<KAPBinderInterface, "KAPRegisterProcAddress">(result != 0, "returns 0");
  }
  TrialInterface(const TrialInterface&) = delete;
  TrialInterface& operator=(const TrialInterface&) = delete;
  ~TrialInterface() { Unregister(); }

  void Unregister() {
    constexpr const char* kName = "KAPUnregisterInterface";
    void* const proc = Find("KAP", kName, kName);
    if (proc) reinterpret_cast<KAPBinderInterface::Proc<"KAPUnregisterInterface">>(proc)(fName);
  }

 private:
  const char* fName;
};

int gFirst, gSecond;

void* MethodOf(KAPContainer* container, const char* method) {
  void* proc = &gFirst;
  Do<Containers, "GetMethod">(&proc, container, MakeAtom(method), MakeAtom("P"), 1);
  return proc;
}

void* ParentMethodOf(KAPContainer* container, const char* instanceName) {
  void* proc = &gFirst;
  Do<Containers, "GetParentMethod">(&proc, container, MakeAtom(instanceName), MakeAtom("M"),
                                    MakeAtom("P"));
  return proc;
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
  Do<Containers, "NewFullContainer">(container.Place(), static_cast<void*>(&reviver),
                                     MakeAtom("KAPProbeImpl"), MakeAtom("KAPProbeTrialInterface"),
                                     &Reviver::Delete);
  reviver.fContainer = container;
  container.Reset();
  Expect(!reviver.fIsRevived, "AddRef of a container that is being destroyed returns true");
}

void CheckNullDelete() {
  int instance = 0;
  Container container;
  Do<Containers, "NewFullContainer">(container.Place(), static_cast<void*>(&instance),
                                     MakeAtom("KAPProbeImpl"), MakeAtom("KAPProbeTrialInterface"),
                                     nullptr);
}

void CheckDecrement() {
  Instance instance;
  Container container = Make(instance);
  KAPContainer* const unowned = container.Detach();
  Need<Containers, "AddRef">(Call<Containers, "AddRef">(unowned), "returns false");
  Call<Containers, "DecrementWithoutDelete">(unowned);
  Call<Containers, "DecrementWithoutDelete">(unowned);
  Expect(instance.fDeleted == 0, "the container is deleted");
  Call<Containers, "DeleteUnownedContainer">(unowned);
  Expect(instance.fDeleted == 1, "two calls for two references leave a reference");
}

void CheckUnowned() {
  Instance instance;
  Container container = Make(instance);
  Call<Containers, "DeleteUnownedContainer">(container);
  const bool isDeleted = instance.fDeleted != 0;
  if (isDeleted) container.Detach();
  Expect(!isDeleted, "a container with a reference is deleted");
  KAPContainer* const unowned = container.Detach();
  Call<Containers, "DecrementWithoutDelete">(unowned);
  Need<Containers, "DecrementWithoutDelete">(instance.fDeleted == 0, "deletes the container");
  Call<Containers, "DeleteUnownedContainer">(unowned);
  Expect(instance.fDeleted == 1, "a container without a reference is not deleted");
}

void CheckClone() {
  const TrialInterface registered("KAPProbeTrialInterface", &gFirst);
  Instance instance;
  Container container = Make(instance);
  Container first = CloneOf(container);
  Expect(first != container, "the clone is the container itself");
  Container second = CloneOf(first);
  container.Reset();
  first.Reset();
  Expect(instance.fDeleted == 0, "the instance is deleted although a clone of a clone lives");
  Expect(InstanceOf(second, "KAPProbeImpl") == &instance, "the clone has another instance");
  Expect(MethodOf(second, "M") == &gFirst, "the clone has other interfaces");
  Expect(TextFrom<Containers, "GetSignature">(second) == "KAPProbeImpl",
         "the clone has another signature");
  second.Reset();
  Expect(instance.fDeleted == 1, "the clone's last release does not delete the instance once");
}

void CheckCloneOfAll() {
  const TrialInterface base("KAPProbeTrialInterface", &gFirst);
  const TrialInterface derived("KAPProbeDerivedInterface", &gSecond);
  Instance instance, other;
  Container container = Make(instance);
  Add(container, "KAPProbeSecond", other);
  AddInterface(container, "KAPProbeSecond", "KAPProbeDerivedInterface");
  Container clone = CloneOf(container);
  Expect(InstanceOf(clone, "KAPProbeSecond") == &other, "the clone lacks an instance");
  Expect(MethodOf(clone, "M") == &gSecond, "the clone lacks an interface");
  container.Reset();
  Expect(other.fDeleted == 0, "an instance is deleted although the clone lives");
  clone.Reset();
  Expect(other.fDeleted == 1, "the clone's last release does not delete each instance once");
}

constexpr Check kChecks[] = {
    {"containers.primary", "KAPContainerInterface", "NewFullContainer",
     "A container with `instance` as its primary one: one reference.",
     [] {
       Instance instance;
       Container container = Make(instance);
       void* found = nullptr;
       Do<Containers, "NGetInstance">(&found, container, MakeAtom("KAPProbeImpl"));
       Expect(found == &instance, "the container has no such instance");
       container.Reset();
       Expect(instance.fDeleted == 1, "the first release deletes the instance " +
                                          std::to_string(instance.fDeleted) + " times");
     }},
    {"containers.last-release", "KAPContainerInterface", "NewFullContainer",
     "The last release passes the instance to `deleteInstance`",
     [] {
       Instance instance;
       CheckLastRelease<Containers>(Make(instance), instance.fDeleted, "deletes the instance");
     }},
    {"containers.null-delete", "KAPContainerInterface", "NewFullContainer",
     "`deleteInstance`, which may be null.", &CheckNullDelete},
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
     "The signature is the text pointer of the instance name's atom",
     [] {
       Instance instance;
       const Container container = Make(instance);
       const Atom name = MakeAtom("KAPProbeImpl");
       Expect(WordsOf(container).fSignature == Call<KAPStringInterface, "GetCString">(name),
              "the word after the primary instance is not the signature");
     }},
    {"containers.empty-word", "KAPContainerInterface", "GetOffsetToPrimaryInstance",
     "null for a container without one.",
     [] {
       const Container empty = MakeEmpty();
       Expect(!WordsOf(empty).fPrimary && !WordsOf(empty).fSignature,
              "the words of an empty container are not null");
     }},
    {"containers.signature", "KAPContainerInterface", "GetSignature",
     "The name of the primary instance: a new reference",
     [] {
       Instance instance;
       const Container container = Make(instance);
       Expect(TextFrom<Containers, "GetSignature">(container) == "KAPProbeImpl",
              "GetSignature returns another name");
     }},
    {"containers.no-signature", "KAPContainerInterface", "GetSignature", "null when it has none.",
     [] {
       Expect(!Atom(Call<Containers, "GetSignature">(MakeEmpty())),
              "an empty container has a signature");
     }},
    {"containers.empty", "KAPContainerInterface", "NewContainer",
     "The first registered instance becomes the primary one.",
     [] {
       Instance first, second;
       const Container container = MakeEmpty();
       Add(container, "KAPProbeFirst", first);
       Add(container, "KAPProbeSecond", second);
       Expect(TextFrom<Containers, "GetSignature">(container) == "KAPProbeFirst",
              "another instance is the primary one");
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
       container.Reset();
       for (const Instance& instance : instances) {
         Expect(instance.fDeleted == 1, "the last release does not delete each instance once");
       }
     }},
    {"containers.instance-fails", "KAPContainerInterface", "RegisterInstance",
     "On an error the instance stays the caller's.",
     [] {
       Instance first, second;
       Container container = Make(first);
       MustFail(
           Call<Containers, "RegisterInstance">(nullptr, MakeAtom("KAPProbeSecond"),
                                                static_cast<void*>(&second), &Instance::Delete),
           "RegisterInstance in null");
       container.Reset();
       Expect(second.fDeleted == 0, "a call that returns an error deletes the instance");
     }},
    {"containers.instance", "KAPContainerInterface", "GetInstance",
     "The instance of that name, borrowed; null when there is none, or when the call fails.",
     [] {
       Instance instance;
       const Container container = Make(instance);
       Expect(InstanceOf(container, "KAPProbeImpl") == &instance,
              "GetInstance does not find the instance under its name");
       Expect(!InstanceOf(container, "KAPProbeOther"), "GetInstance finds an unknown name");
       Expect(!Call<Containers, "GetInstance">(nullptr, nullptr), "null has an instance");
     }},
    {"containers.no-instance-error", "KAPContainerInterface", "NGetInstance",
     "As GetInstance, but distinguishes a failure: null and no error when the container has no"
     " instance of that name.",
     [] {
       Instance instance;
       const Container container = Make(instance);
       void* found = &gSecond;
       Do<Containers, "NGetInstance">(&found, container, MakeAtom("KAPProbeOther"));
       Expect(!found, "NGetInstance finds an unknown name");
       Do<Containers, "NGetInstance">(&found, container, MakeAtom("KAPProbeImpl"));
       Expect(found == &instance, "NGetInstance does not find the instance");
     }},
    {"containers.method", "KAPContainerInterface", "GetMethod",
     "The procedure registered under these names for one of the container's interfaces; null and no"
     " error when there is none.",
     [] {
       TrialInterface registered("KAPProbeTrialInterface", &gFirst);
       Instance instance;
       const Container container = Make(instance);
       Expect(MethodOf(container, "M") == &gFirst, "GetMethod does not find the procedure");
       Expect(!MethodOf(container, "N"), "GetMethod finds an unknown procedure");
       registered.Unregister();
       Expect(!MethodOf(container, "M"), "GetMethod finds a procedure that was unregistered");
     }},
    {"containers.interfaces", "KAPContainerInterface", "RegisterInterface",
     "GetMethod searches the interface registered last first.",
     [] {
       const TrialInterface base("KAPProbeTrialInterface", &gFirst);
       TrialInterface derived("KAPProbeDerivedInterface", &gSecond);
       Instance instance;
       const Container container = Make(instance);
       AddInterface(container, "KAPProbeImpl", "KAPProbeDerivedInterface");
       Expect(MethodOf(container, "M") == &gSecond,
              "GetMethod finds the procedure of the interface registered first");
       derived.Unregister();
       Expect(MethodOf(container, "M") == &gFirst,
              "GetMethod finds nothing in the interface registered first");
     }},
    {"containers.parent-method", "KAPContainerInterface", "GetParentMethod",
     "searches only the interfaces registered before those of `instanceName`: what the instance"
     " overrides.",
     [] {
       const TrialInterface base("KAPProbeTrialInterface", &gFirst);
       const TrialInterface derived("KAPProbeDerivedInterface", &gSecond);
       Instance instance, other;
       const Container container = Make(instance);
       Add(container, "KAPProbeDerived", other);
       AddInterface(container, "KAPProbeDerived", "KAPProbeDerivedInterface");
       Expect(ParentMethodOf(container, "KAPProbeDerived") == &gFirst,
              "GetParentMethod does not find what the instance overrides");
       Expect(!ParentMethodOf(container, "KAPProbeImpl"), "the first instance overrides something");
     }},
    {"containers.clone", "KAPContainerInterface", "CloneContainer",
     "A container with the same instances and interfaces, which holds a reference to `container`:"
     " one reference.",
     &CheckClone},
    {"containers.clone-of-all", "KAPContainerInterface", "CloneContainer",
     "A container with the same instances and interfaces", &CheckCloneOfAll},
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
       Expect(count, "DebugGetRefCountAddr returns null");
       [[maybe_unused]] const int value = *count;  // any value, but readable
       Expect((Call<Containers, "DebugGetRefCountAddr">(container)) == count,
              "two calls return different addresses");
     }},
    {"containers.decrement", "KAPContainerInterface", "DecrementWithoutDelete",
     "Releases one reference without deleting the container, even if it was the last one.",
     &CheckDecrement},
    {"containers.unowned", "KAPContainerInterface", "DeleteUnownedContainer",
     "Deletes a container that has no reference; otherwise does nothing.", &CheckUnowned},
    {"containers.release", "KAPContainerInterface", "Release",
     "Releases one reference; null is ignored. The last release deletes the instances.",
     [] {
       Call<Containers, "Release">(nullptr);
       Instance instance;
       Make(instance).Reset();
       Expect(instance.fDeleted == 1, "a new container outlives one release");
     }},
};

}  // namespace

std::span<const Check> ContainerChecks() { return kChecks; }

}  // namespace KAPProbe
