// SPDX-License-Identifier: MIT
#pragma once

#include "pos/POSObject.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// What the wrappers of one kind share: the checked downcast, and calls through the interface of the
// kind. Example: the wrapper of numbers is
//
//   class CPOSNumber : public TPOSKind<POSNumberInterface, "IsPOSNumber",
//                                      "downcast from CPOSObject to CPOSNumber failed"> { ... };
//
// `IsKind` names the method that checks the kind of a handle, `Message` is the text of
// the POSException for one that is not. An interface that cannot be loaded fails in the same way,
// in every call of the wrapper.
template <class Interface, TKAPName IsKind, TKAPName Message>
class TPOSKind : public CPOSObject {
 public:
  static constexpr POSType kType = Interface::kType;             // the kind
  static constexpr const char* kDowncastFailed = Message.fText;  // the message of a failed downcast

  TPOSKind() noexcept = default;  // an empty reference

  // The downcast: another reference to the same object, as one of the kind. For an object of
  // another kind, or an empty one: an empty reference when `noThrow`, else POSException.
  TPOSKind(const CPOSObject& object, POSNoThrow noThrow) : CPOSObject(Downcast(object, noThrow)) {}
  explicit TPOSKind(const CPOSObject& object) : TPOSKind(object, false) {}

 protected:
  // A new object, from the handle that its "New" procedure returned. CKAPError "invalid container"
  // for null, which stands for a failure that is reported already.
  TPOSKind(POSObject* created, KAPAdopt adopt) : CPOSObject(created, adopt) {}

  // Calls a method of the interface, for example Call<"Get">(Handle()).
  template <TKAPName Method, class... Args>
  static auto Call(Args... args) {
    if (!Client::TryRefresh()) [[unlikely]]
      throw POSException(kDowncastFailed);
    return Client::template CallLoaded<Method>(args...);
  }

 private:
  using Client = TKAPInterfaceClient<Interface>;

  static CPOSObject Downcast(const CPOSObject& object, POSNoThrow noThrow) {
    if (!object.IsNull() && Client::TryRefresh() &&
        Client::template CallLoaded<IsKind>(object.Handle())) {
      return object;
    }
    if (!noThrow) throw POSException(kDowncastFailed);
    return {};
  }
};

}  // namespace KAP_T_MT
