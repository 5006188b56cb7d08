#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "ProcessCounter.h"
#include "kap/KAPClientBase.h"
#include "kap/KAPContainer.h"
#include "pos/POSException.h"
#include "pos/POSObject.h"

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
  static BaseObject* GetInstanceNoThrow(const POSObject* handle) noexcept;
  static BaseObject& GetInstance(const POSObject* handle);

  // Puts the object into a container: one reference for the caller.
  template <class Kind>
  static POSObject* NewContainer(std::unique_ptr<Kind> object) {
    POSObject* handle = Contain(object.get(), object->GetDeleteProc());
    object.release();  // the container's now
    return handle;
  }

  // The object written in `text`, see TextReader.h.
  static CPOSObject CreateFromText(const char* text, const char** end);

  static unsigned int GetNumPOSObjects() noexcept { return fNumPOSObjects.load(); }

  // What a container calls with its instance, a BaseObject.
  virtual KAPDeleteProc GetDeleteProc() const noexcept = 0;

 protected:
  BaseObject() noexcept { AddToProcessCounter(fNumPOSObjects, 1); }

 private:
  static POSObject* Contain(BaseObject* object, KAPDeleteProc deleteObject);

  static constinit std::atomic<unsigned int> fNumPOSObjects;  // live objects of all kinds
};

// Calls `new Kind(args...)` and puts the result into a container.
template <class Kind, class... Args>
POSObject* NewObject(Args&&... args) {
  return BaseObject::NewContainer(std::unique_ptr<Kind>(new Kind(std::forward<Args>(args)...)));
}

// The look-ups of one kind. `Kind` supplies kType and kNotInstance, the message for an object that
// is none.
template <class Kind, class Base = BaseObject>
class TObjectKind : public Base {
 public:
  static Kind* GetInstanceNoThrow(const POSObject* handle) noexcept {
    return As(BaseObject::GetInstanceNoThrow(handle));
  }
  static Kind& GetInstance(const POSObject* handle) {
    Kind* instance = GetInstanceNoThrow(handle);
    if (!instance) [[unlikely]]
      throw POSException(Kind::kNotInstance);
    return *instance;
  }

  // The object as one of this kind, null when it is of another.
  static Kind* As(BaseObject* object) noexcept {
    return object && object->GetType() == Kind::kType ? static_cast<Kind*>(object) : nullptr;
  }
  static const Kind* As(const BaseObject* object) noexcept {
    return As(const_cast<BaseObject*>(object));
  }

  int GetType() const final { return Kind::kType; }
};

// A kind that cannot change: shared instead of copied.
template <class Kind>
class TScalar : public TObjectKind<Kind> {
 public:
  BaseObject* Clone() final { return this; }
  bool IsEqual(const BaseObject& other) const final {
    const Kind* same = TObjectKind<Kind>::As(&other);
    return same && static_cast<const Kind*>(this)->EqualsSame(*same);
  }
  KAPDeleteProc GetDeleteProc() const noexcept final {
    return [](void* instance) { delete static_cast<Kind*>(static_cast<BaseObject*>(instance)); };
  }
};

// The handle of what a slot or an entry holds, with a new reference for the caller; null for none.
inline POSObject* NewReference(const CPOSObject* object) {
  return object && !object->IsNull() ? KAP_T_MT::CKAPContainer::AddRef(object->Handle()) : nullptr;
}

// Raises POSException when an argument that must be there is null.
template <class T>
T* Required(T* argument) {
  if (!argument) [[unlikely]]
    throw POSException("a null pointer was given where a value is needed");
  return argument;
}

}  // namespace NPOSObjectImpl
