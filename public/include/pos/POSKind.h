#pragma once

#include "pos/POSObject.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// What the wrappers of one kind share: the checked downcast, and calls through the kind's
// interface. An interface that cannot be loaded fails like an object of another kind, with
// `Message`.
template <class Interface, TKAPName IsKind, TKAPName Message>
class TPOSKind : public CPOSObject {
 public:
  static constexpr POSType kType = Interface::kType;
  static constexpr const char* kDowncastFailed = Message.fText;

  // An object of the kind, or an empty one; see the downcast.
  TPOSKind() noexcept = default;

  // The same object as one of the kind. Of another kind, or empty: an empty object when `noThrow`,
  // else POSException.
  TPOSKind(const CPOSObject& object, bool noThrow) : CPOSObject(Downcast(object, noThrow)) {}

 protected:
  // A new object, from the handle that its "New" procedure returned.
  TPOSKind(POSObject* created, KAPAdopt adopt) : CPOSObject(created, adopt) {}

  template <TKAPName Method, class... Args>
  static auto Call(Args... args) {
    if (!Client::TryRefresh()) [[unlikely]]
      throw POSException(kDowncastFailed);
    return Client::template CallLoaded<Method>(args...);
  }

 private:
  using Client = TKAPInterfaceClient<Interface>;

  static CPOSObject Downcast(const CPOSObject& object, bool noThrow) {
    if (!object.IsNull() && Client::TryRefresh() &&
        Client::template CallLoaded<IsKind>(object.Handle())) {
      return object;
    }
    if (!noThrow) throw POSException(kDowncastFailed);
    return {};
  }
};

}  // namespace KAP_T_MT
