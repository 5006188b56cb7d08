// The procedures of "POSDictIteratorInterface".

#include "DictIterator.h"
#include "KAPUtilsAtoms.h"
#include "POSDictImpl.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"

namespace NPOSObjectImpl {

using KAP_T_MT::CKAPContainer;
using KAP_T_MT::KAPReportingError;

POSDictIterator* DictIterator::NewContainer(const Dict& dict) {
  const KAPUtilsAtoms& atoms = KAPUtilsAtoms::Get();
  std::unique_ptr<DictIterator> iterator(new DictIterator(dict));
  POSDictIterator* handle = CKAPContainer::NewFullContainer(
      iterator.get(), atoms.POSDictIteratorImpl, atoms.POSDictIteratorInterface,
      [](void* instance) { delete static_cast<DictIterator*>(instance); });
  static_cast<void>(iterator.release());  // the container's now
  return handle;
}

DictIterator& DictIterator::GetInstance(POSDictIterator* handle) {
  void* instance =
      handle ? CKAPContainer::GetInstance(handle, KAPUtilsAtoms::Get().POSDictIteratorImpl)
             : nullptr;
  if (!instance) throw POSException("instance was not an POSDictIterator");
  return *static_cast<DictIterator*>(instance);
}

const char* DictIterator::CurKey() const {
  if (!fCurrent) throw POSException("POSDictIterator is done");
  return fCurrent->GetKey().Text();
}

namespace {

POSDictIterator* POSDictIteratorNewPOSDictIteratorProc(POSDict* dict) noexcept {
  return KAPReportingError([=] { return DictIterator::NewContainer(Dict::GetInstance(dict)); });
}

void POSDictIteratorBeginProc(POSDictIterator* iterator) noexcept {
  KAPReportingError([=] { DictIterator::GetInstance(iterator).Begin(); });
}

void POSDictIteratorNextProc(POSDictIterator* iterator) noexcept {
  KAPReportingError([=] { DictIterator::GetInstance(iterator).Next(); });
}

// True also after a failure, so that a loop ends.
bool POSDictIteratorIsDoneProc(POSDictIterator* iterator) noexcept {
  return KAPReportingError([=] { return DictIterator::GetInstance(iterator).IsDone(); }, true);
}

const char* POSDictIteratorCurKeyProc(POSDictIterator* iterator) noexcept {
  return KAPReportingError([=] { return DictIterator::GetInstance(iterator).CurKey(); });
}

}  // namespace

bool RegisterDictIteratorProcs() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSDictIteratorInterface>(
      &POSDictIteratorNewPOSDictIteratorProc, &POSDictIteratorBeginProc, &POSDictIteratorNextProc,
      &POSDictIteratorIsDoneProc, &POSDictIteratorCurKeyProc);
}

}  // namespace NPOSObjectImpl
