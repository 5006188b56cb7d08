// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <utility>

#include "kap/KAPClientBase.h"
#include "kap/KAPContainer.h"
#include "kapimpl/base/KAPUtilsAtoms.h"
#include "pos/POSException.h"
#include "pos/POSObject.h"
#include "posimpl/base/ObjectCount.h"

namespace NPOSObjectImpl {

using KAP_T_MT::CPOSObject;
using KAP_T_MT::POSException;
using KAP_T_MT::POSType;

class Walk;

// What the handle of a property object stands for: the primary instance of its container.
class BaseObject : public KAP_T_MT::CKAPClientBase {
 public:
  BaseObject(const BaseObject&) = delete;
  BaseObject& operator=(const BaseObject&) = delete;
  virtual ~BaseObject() { fNumPOSObjects.AddDeleted(); }

  // This object itself when it cannot change, else a new one that the caller owns. Null when the
  // walk stops.
  virtual BaseObject* Clone(Walk& walk) = 0;
  virtual bool IsEqual(const BaseObject& other, Walk& walk) const = 0;
  virtual POSType GetType() const = 0;

  // The property object of a handle. Without one (null, a container of another implementation, a
  // host that fails): null, or POSException "instance was not an POSObject".
  [[gnu::always_inline]] static BaseObject* GetInstanceNoThrow(const POSObject* handle) noexcept {
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
    return CPOSObject(KAP_T_MT::CKAPContainer::AddRef(handle), KAP_T_MT::KAPAdopt());
  }

  // The handle with a new reference, for what is known to be a property object; null for null.
  [[gnu::always_inline]] static POSObject* AddRef(POSObject* held) {
    return held ? KAP_T_MT::CKAPContainer::AddRef(held) : nullptr;
  }
  static CPOSObject Share(POSObject* held) { return Adopt(AddRef(held)); }
  // Takes over the reference of a handle, null included.
  [[gnu::always_inline]] static CPOSObject Adopt(POSObject* handle) {
    return handle ? CPOSObject(handle, KAP_T_MT::KAPAdopt()) : CPOSObject();
  }

  // Puts the object into a container: one reference for the caller.
  template <class Kind>
  static POSObject* Contain(std::unique_ptr<Kind> object) {
    POSObject* const handle = PutIntoContainer(object.get(), object->GetDeleteProc());
    static_cast<void>(object.release());  // the container owns it now
    return handle;
  }

  // Deliberate no-ops: they write nothing.
  static void DebugDump(const CPOSObject&, const char* /*header*/) noexcept {}
  static void DebugDumpRewind(const CPOSObject&, const char* /*header*/) noexcept {}

  // What a container calls with its instance, a BaseObject.
  virtual KAPDeleteProc GetDeleteProc() const noexcept = 0;

 protected:
  BaseObject() noexcept { fNumPOSObjects.AddMade(); }

  template <class Kind>
  static void Delete(void* instance) noexcept {
    delete static_cast<Kind*>(static_cast<BaseObject*>(instance));
  }

 private:
  [[gnu::noinline]] static BaseObject* AskHost(const POSObject* handle) noexcept;
  // The object becomes the container's, unless this throws.
  static POSObject* PutIntoContainer(BaseObject* object, KAPDeleteProc deleteObject);

  static constinit ObjectCount fNumPOSObjects;  // live objects of all kinds
};

}  // namespace NPOSObjectImpl
