#pragma once

#include <sys/single_threaded.h>

#include <atomic>
#include <memory>
#include <utility>

#include "kap/KAPClientBase.h"
#include "kap/KAPContainer.h"
#include "kapimpl/base/KAPUtilsAtoms.h"
#include "pos/POSException.h"
#include "pos/POSObject.h"

namespace NPOSObjectImpl {

using KAP_T_MT::CPOSObject;
using KAP_T_MT::POSException;
using KAP_T_MT::POSType;

class NestingStack;

// What the handle of a property object stands for: the primary instance of its container.
class BaseObject : public KAP_T_MT::CKAPClientBase {
 public:
  BaseObject(const BaseObject&) = delete;
  BaseObject& operator=(const BaseObject&) = delete;
  virtual ~BaseObject() { CountObjects(-1); }

  // This object itself when it cannot change, else a new one that the caller owns.
  virtual BaseObject* Clone(NestingStack& stack) = 0;
  virtual bool IsEqual(const BaseObject& other, NestingStack& stack) const = 0;
  virtual POSType GetType() const = 0;

  // The property object of a handle. Without one (null, a container of another implementation, a
  // host that fails): null, or POSException "instance was not an POSObject".
  static BaseObject* GetInstanceNoThrow(const POSObject* handle) noexcept {
    BaseObject* own = OwnInstance(handle);
    return own || !handle ? own : AskHost(handle);
  }
  static BaseObject& GetInstance(const POSObject* handle);

  // The same for the primary instance of a container of ours, which is what nearly every handle
  // stands for; null for any other handle. Calls nothing.
  static BaseObject* OwnInstance(const POSObject* handle) noexcept {
    const KAPUtilsAtoms* atoms = KAPUtilsAtoms::Find();
    if (!handle || !atoms) return nullptr;
    return static_cast<BaseObject*>(
        KAP_T_MT::CKAPContainer::PrimaryInstance(handle, atoms->POSObjectImpl));
  }

  // A new reference to what must be a property object, see CPOSObject.
  static CPOSObject Reference(POSObject* handle) {
    if (!OwnInstance(handle)) return CPOSObject(handle);
    return Share(handle);
  }

  // A new reference to what is known to be a property object; none to null.
  static CPOSObject Share(POSObject* held) {
    return held ? CPOSObject(KAP_T_MT::CKAPContainer::AddRef(held), KAP_T_MT::KAPAdopt())
                : CPOSObject();
  }

  // Puts the object into a container: one reference for the caller.
  template <class Kind>
  static POSObject* Contain(std::unique_ptr<Kind> object) {
    const KAPDeleteProc deleteObject = object->GetDeleteProc();
    return PutIntoContainer(std::unique_ptr<BaseObject>(std::move(object)), deleteObject);
  }

  // Deliberate no-ops: they write nothing.
  static void DebugDump(const CPOSObject&, const char* /*header*/) noexcept {}
  static void DebugDumpRewind(const CPOSObject&, const char* /*header*/) noexcept {}

  // What a container calls with its instance, a BaseObject.
  virtual KAPDeleteProc GetDeleteProc() const noexcept = 0;

 protected:
  BaseObject() noexcept { CountObjects(1); }

  template <class Kind>
  static void Delete(void* instance) noexcept {
    delete static_cast<Kind*>(static_cast<BaseObject*>(instance));
  }

 private:
  static BaseObject* AskHost(const POSObject* handle) noexcept;
  static POSObject* PutIntoContainer(std::unique_ptr<BaseObject> object,
                                     KAPDeleteProc deleteObject);

  // The C library knows whether the process has ever had a second thread. Until then an ordinary
  // addition suffices: an atomic one costs more than the rest of an object's constructor. A thread
  // that is created later sees the result.
  static void CountObjects(int change) noexcept {
    const auto difference = static_cast<unsigned int>(change);
    if (__libc_single_threaded) {
      fNumPOSObjects.store(fNumPOSObjects.load(std::memory_order_relaxed) + difference,
                           std::memory_order_relaxed);
    } else {
      fNumPOSObjects.fetch_add(difference, std::memory_order_relaxed);
    }
  }

  static constinit std::atomic<unsigned int> fNumPOSObjects;  // live objects of all kinds
};

}  // namespace NPOSObjectImpl
