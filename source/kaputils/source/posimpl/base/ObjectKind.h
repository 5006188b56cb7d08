// SPDX-License-Identifier: MIT
#pragma once

#include <type_traits>
#include <typeinfo>

#include "posimpl/base/BaseObject.h"

namespace NPOSObjectImpl {

class HoldingObject;
template <class Kind, class Base = BaseObject>
class TScalar;

// What the classes of all kinds share. `Kind` supplies kType and kNotInstance, the message for an
// object that is of another kind; `Base` says how its objects are deleted.
template <class Kind, class Base = BaseObject>
class TObjectKind : public Base {
 public:
  // A new object in a container: one reference for the caller.
  template <class... Args>
  static POSObject* NewContainer(Args&&... args) {
    return BaseObject::Contain(std::unique_ptr<Kind>(new Kind(std::forward<Args>(args)...)));
  }

  // The object of this kind that a handle stands for. For any other handle, null included: null, or
  // POSException.
  static Kind* GetInstanceNoThrow(const POSObject* handle) noexcept {
    return As(BaseObject::GetInstanceNoThrow(handle));
  }
  [[gnu::always_inline]] static Kind& GetInstance(const POSObject* handle) {
    BaseObject* const own = BaseObject::OwnInstance(handle);
    return own && IsOfKind(*own) ? static_cast<Kind&>(*own) : GetOtherInstance(handle);
  }

  // The object as one of this kind, null when it is of another.
  static Kind* As(BaseObject* object) noexcept {
    return object && IsOfKind(*object) ? static_cast<Kind*>(object) : nullptr;
  }
  static const Kind* As(const BaseObject* object) noexcept {
    return As(const_cast<BaseObject*>(object));
  }

  POSType GetType() const final {
    static_assert(
        KAP_T_MT::POSIsScalar(Kind::kType) == std::is_base_of_v<TScalar<Kind, Base>, Kind>,
        "a kind is derived from TScalar if and only if POSIsScalar says so");
    static_assert(KAP_T_MT::POSIsScalar(Kind::kType) || std::is_base_of_v<HoldingObject, Kind>,
                  "a kind that holds objects must be derived from HoldingObject");
    return Kind::kType;
  }
  KAPDeleteProc GetDeleteProc() const noexcept override { return &Base::template Delete<Kind>; }

 private:
  [[gnu::noinline]] static Kind& GetOtherInstance(const POSObject* handle) {
    Kind* instance = GetInstanceNoThrow(handle);
    if (!instance) throw POSException(Kind::kNotInstance);
    return *instance;
  }

  // By the address of the type: no object comes from outside the library, and it takes no virtual
  // call, unlike GetType.
  static bool IsOfKind(const BaseObject& object) noexcept {
    return &typeid(object) == &typeid(Kind);
  }
};

// A kind that cannot change: shared instead of copied. `Kind` supplies EqualsSame.
template <class Kind, class Base>
class TScalar : public TObjectKind<Kind, Base> {
 public:
  BaseObject* Clone(Walk&) final { return this; }
  bool IsEqual(const BaseObject& other, Walk&) const final {
    const Kind* same = TScalar::As(&other);
    return same && static_cast<const Kind*>(this)->EqualsSame(*same);
  }
};

// A new, empty array or dictionary, and the object inside its container, to be filled without
// crossing the boundary for each value.
template <class Kind>
struct Made {
  Made()
      : fObject(Kind::NewContainer(), KAP_T_MT::KAPAdopt()),
        fInstance(Kind::GetInstance(fObject.Handle())) {}

  CPOSObject fObject;
  Kind& fInstance;
};

}  // namespace NPOSObjectImpl
