// The procedures of "POSDictInterface".

#include "AtomText.h"
#include "Dict.h"
#include "POSDictImpl.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"

namespace NPOSObjectImpl {

using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::KAPReportingError;

namespace {

POSDict* POSDictNewPOSDictProc() noexcept {
  return KAPReportingError([] { return Dict::NewContainer(); });
}

bool POSDictIsPOSDictProc(POSObject* object) noexcept {
  return Dict::GetInstanceNoThrow(object) != nullptr;
}

POSObject* POSDictGetProc(POSDict* dict, KAPStringAtom* key) noexcept {
  return KAPReportingError([=] { return Dict::GetInstance(dict).Get(TextOf(key), true).Detach(); });
}

// What goes wrong on the way, a refusal of the host too, means that the path leads nowhere.
POSObject* POSDictDeepGetProc(POSDict* dict, KAPStringAtom* path) noexcept {
  return KAPReportingError(
      [=] { return Dict::GetInstance(dict).DeepGet(TextOf(path), true).Detach(); });
}

void POSDictPutProc(POSDict* dict, KAPStringAtom* key, POSObject* object) noexcept {
  KAPReportingError([=] {
    Dict::GetInstance(dict).Put(
        TextOf(key), [=] { return CKAPStringAtom(key, false); }, BaseObject::Reference(object));
  });
}

void POSDictRemoveProc(POSDict* dict, KAPStringAtom* key) noexcept {
  KAPReportingError([=] { Dict::GetInstance(dict).Remove(TextOf(key)); });
}

}  // namespace

bool RegisterDictProcs() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSDictInterface>(
      &POSDictNewPOSDictProc, &POSDictIsPOSDictProc, &POSDictGetProc, &POSDictDeepGetProc,
      &POSDictPutProc, &POSDictRemoveProc);
}

}  // namespace NPOSObjectImpl
