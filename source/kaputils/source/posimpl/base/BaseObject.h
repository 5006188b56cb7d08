#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "kap/KAPClientBase.h"
#include "kap/KAPContainer.h"
#include "kapimpl/KAPUtilsAtoms.h"
#include "pos/POSException.h"
#include "pos/POSObject.h"
#include "posimpl/base/ProcessCounter.h"

namespace NPOSObjectImpl {

using KAP_T_MT::CPOSObject;
using KAP_T_MT::POSException;

// What stands behind the handle of a property object: the primary instance of its container.
class BaseObject : public KAP_T_MT::CKAPClientBase {
 public:
  BaseObject(const BaseObject&) = delete;
  BaseObject& operator=(const BaseObject&) = delete;
  virtual ~BaseObject() { AddToProcessCounter(fNumPOSObjects, -1); }

  // This object itself when it cannot change, else a new one that the caller owns.
  virtual BaseObject* Clone() = 0;
  virtual bool IsEqual(const BaseObject& other) const = 0;
  virtual int GetType() const = 0;  // a POSType

  // The property object behind a handle. Without one (null, a container of another implementation,
  // a host that refuses): null, or POSException "instance was not an POSObject".
  static BaseObject* GetInstanceNoThrow(const POSObject* handle) noexcept {
    BaseObject* own = OwnInstance(handle);
    return own || !handle ? own : AskHost(handle);
  }
  static BaseObject& GetInstance(const POSObject* handle);

  // The same for the primary instance of a container of ours, which is what nearly every handle
  // stands for; null for any other handle. Asks nobody.
  static BaseObject* OwnInstance(const POSObject* handle) noexcept {
    const KAPUtilsAtoms* atoms = KAPUtilsAtoms::Find();
    if (!handle || !atoms) return nullptr;
    return static_cast<BaseObject*>(
        KAP_T_MT::CKAPContainer::PrimaryInstance(handle, atoms->POSObjectImpl));
  }

  // A reference to what must be a property object, see CPOSObject.
  static CPOSObject Reference(POSObject* handle) {
    if (!OwnInstance(handle)) return CPOSObject(handle);
    return CPOSObject(KAP_T_MT::CKAPContainer::AddRef(handle), KAP_T_MT::KAPAdopt());
  }

  // Puts the object into a container: one reference for the caller.
  template <class Kind>
  static POSObject* Contain(std::unique_ptr<Kind> object) {
    POSObject* handle = NewFullContainer(object.get(), object->GetDeleteProc());
    static_cast<void>(object.release());  // the container's now
    return handle;
  }

  // The object written in `text`, see TextReader.h.
  static CPOSObject CreateFromText(const char* text, const char** end);

  // Deliberate no-ops: they write nothing.
  static void DebugDump(const CPOSObject&, const char* /*header*/) noexcept {}
  static void DebugDumpRewind(const CPOSObject&, const char* /*header*/) noexcept {}

  // What a container calls with its instance, a BaseObject.
  virtual KAPDeleteProc GetDeleteProc() const noexcept = 0;

 protected:
  BaseObject() noexcept { AddToProcessCounter(fNumPOSObjects, 1); }

  template <class Kind>
  static void Delete(void* instance) noexcept {
    delete static_cast<Kind*>(static_cast<BaseObject*>(instance));
  }

 private:
  static BaseObject* AskHost(const POSObject* handle) noexcept;
  static POSObject* NewFullContainer(BaseObject* object, KAPDeleteProc deleteObject);

  static constinit std::atomic<unsigned int> fNumPOSObjects;  // live objects of all kinds
};

}  // namespace NPOSObjectImpl
